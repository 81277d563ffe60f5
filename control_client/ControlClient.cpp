#include "control_client/ControlClient.h"

#include "control_client/DisplayText.h"
#include "control_client/JSONFields.h"
#include "platform/store/JSONDocument.h"

namespace quilletctl {

namespace {

using platform::JSONValue;

constexpr int kId = 1;  // one call at a time
/// Of a message of the proxy's; it is to be one line for a person.
constexpr std::size_t kMaxReason = 200;

/// The code of the error that turns a client away.
constexpr int kNotAllowed = -32001;

tl::unexpected<Failure> notUnderstood() {
  return tl::unexpected(Failure{kFailed, "quillet-dns-proxy sends what is no JSON-RPC message"});
}

std::string requestLine(const std::string& method, JSONValue params) {
  const JSONValue request{
      {"jsonrpc", "2.0"}, {"id", kId}, {"method", method}, {"params", std::move(params)}};
  return request.dump() + "\n";
}

tl::expected<JSONValue, Failure> messageIn(const std::string& line) {
  auto document = platform::parseJSON(line, ControlConnection::kMaxLine);
  if (!document || !document->value.is_object()) {
    return notUnderstood();
  }
  return std::move(document->value);
}

tl::expected<Notification, Failure> notificationIn(const std::string& line) {
  const auto message = messageIn(line);
  if (!message) {
    return tl::unexpected(message.error());
  }
  auto method = textOf(*message, "method");
  if (!method) {
    return notUnderstood();
  }
  return Notification{std::move(*method), memberOf(*message, "params")};
}

/// Of an error that the proxy answers.
Failure failureIn(const JSONValue& error) {
  const auto reason = textOf(error, "message").value_or("quillet-dns-proxy gives no reason");
  const auto* const introduction = memberOf(error, "code") == kNotAllowed
                                       ? "quillet-dns-proxy serves root and its own group only: "
                                       : "";
  return {kFailed, introduction + cut(printable(reason), kMaxReason)};
}

/// The answer's result; absent for a message that is not the answer.
tl::expected<std::optional<JSONValue>, Failure> resultIn(const std::string& line) {
  auto message = messageIn(line);
  if (!message) {
    return tl::unexpected(message.error());
  }
  const auto& id = memberOf(*message, "id");
  if (const auto& error = memberOf(*message, "error"); error.is_object()) {
    return tl::unexpected(failureIn(error));
  }
  if (id != kId || !message->contains("result")) {
    return std::nullopt;
  }
  return std::move((*message)["result"]);
}

}  // namespace

tl::expected<JSONValue, Failure> ControlClient::call(const std::string& method, JSONValue params) {
  const auto deadline = ControlConnection::patience();
  if (const auto sent = connection_.send(requestLine(method, std::move(params))); !sent) {
    return tl::unexpected(sent.error());
  }
  for (;;) {
    const auto line = connection_.line(deadline);
    if (!line) {
      return tl::unexpected(Failure{kFailed, line.error().text});
    }
    auto result = resultIn(*line);
    if (!result) {
      return tl::unexpected(std::move(result.error()));
    }
    if (*result) {
      return std::move(**result);
    }
  }
}

tl::expected<Notification, Failure> ControlClient::notification() {
  const auto line = connection_.line(std::nullopt);
  return line ? notificationIn(*line) : tl::unexpected(line.error());
}

tl::expected<std::optional<Notification>, Failure> ControlClient::notificationIfThere() {
  const auto line = connection_.lineIfThere();
  if (!line) {
    return tl::unexpected(line.error());
  }
  if (!*line) {
    return std::nullopt;
  }
  return notificationIn(**line);
}

}  // namespace quilletctl
