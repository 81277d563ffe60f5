#include "platform/xpc/JSONRPC.h"

#include <utility>

#include "platform/store/JSONDocument.h"

namespace platform {

namespace {

const char* messageOf(JSONRPCError error) {
  switch (error) {
    case JSONRPCError::kParseError:
      return "Parse error";
    case JSONRPCError::kInvalidRequest:
      return "Invalid Request";
    case JSONRPCError::kMethodNotFound:
      return "Method not found";
    case JSONRPCError::kInvalidParams:
      return "Invalid params";
    case JSONRPCError::kInternalError:
      return "Internal error";
    case JSONRPCError::kNotAllowed:
      return "Not allowed";
    case JSONRPCError::kMethodFailed:
      return "Failed";
  }
  return "";
}

bool isId(const JSONValue& value) {
  return value.is_string() || value.is_number() || value.is_null();
}

/// The member, taken out of the object.
std::optional<JSONValue> take(JSONValue& object, const char* name) {
  const auto member = object.find(name);
  return member == object.end() ? std::nullopt : std::optional(std::move(*member));
}

tl::unexpected<JSONRPCRejection> rejected(JSONRPCError error, JSONValue id = nullptr) {
  return tl::unexpected(JSONRPCRejection{std::move(id), error});
}

std::string textOf(const JSONValue& message) {
  return message.dump(-1, ' ', false, JSONValue::error_handler_t::replace);
}

std::string lineOf(const JSONValue& message) { return textOf(message) + "\n"; }

}  // namespace

tl::expected<JSONRPCRequest, JSONRPCRejection> readJSONRPCRequest(std::string_view line) {
  auto document = parseJSON(line);
  if (!document || !document->leftOut.empty()) {
    return rejected(JSONRPCError::kParseError);
  }
  auto& message = document->value;
  if (!message.is_object()) {
    return rejected(JSONRPCError::kInvalidRequest);
  }
  auto id = take(message, "id");
  if (id && !isId(*id)) {
    return rejected(JSONRPCError::kInvalidRequest);
  }
  auto method = take(message, "method");
  if (take(message, "jsonrpc") != JSONValue("2.0") || !method || !method->is_string()) {
    return rejected(JSONRPCError::kInvalidRequest, id.value_or(nullptr));
  }
  return JSONRPCRequest{std::move(id), method->get<std::string>(), take(message, "params")};
}

std::string jsonRPCResultLine(const JSONValue& id, const JSONValue& result) {
  return lineOf({{"jsonrpc", "2.0"}, {"id", id}, {"result", result}});
}

std::string jsonRPCErrorLine(const JSONValue& id, const JSONRPCFault& fault) {
  const JSONValue details{
      {"code", static_cast<int>(fault.error)},
      {"message", fault.message.empty() ? messageOf(fault.error) : fault.message}};
  return lineOf({{"jsonrpc", "2.0"}, {"id", id}, {"error", details}});
}

// The members stand in the order of their names: the result is the last.
std::string jsonRPCTextHead(const JSONValue& id) {
  auto line = jsonRPCResultLine(id, "");
  line.resize(line.size() - kJSONRPCTextTail.size());
  return line;
}

std::string jsonRPCTextPart(const std::string& text) {
  const auto quoted = textOf(text);
  return quoted.substr(1, quoted.size() - 2);
}

std::string jsonRPCNotificationLine(const std::string& method, const JSONValue& params) {
  return lineOf({{"jsonrpc", "2.0"}, {"method", method}, {"params", params}});
}

}  // namespace platform
