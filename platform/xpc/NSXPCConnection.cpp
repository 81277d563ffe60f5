#include "platform/xpc/NSXPCConnection.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <optional>
#include <utility>

#include "platform/dispatch/RunGuarded.h"
#include "platform/foundation/Clock.h"
#include "platform/xpc/JSONRPC.h"

namespace platform {

namespace {

constexpr std::size_t kChunk = 16UL * 1024;

std::uint64_t now() { return Clock::shared().uptimeNanoseconds(); }

/// The arguments by position: none may be left out for none.
std::optional<std::string> textArgument(const std::optional<JSONValue>& params, bool takesText) {
  const JSONValue arguments = params.value_or(JSONValue::array());
  if (!arguments.is_array() || arguments.size() != (takesText ? 1U : 0U)) {
    return std::nullopt;
  }
  if (!takesText) {
    return "";
  }
  const auto* const text = arguments.front().get_ptr<const std::string*>();
  return text == nullptr ? std::nullopt : std::optional(*text);
}

/// The result of the call; absent when the method threw or did not reply.
std::optional<JSONValue> resultOf(const NSXPCInterface::Method& method, NSObject& object,
                                  const std::string& text) {
  std::optional<JSONValue> result;
  runGuarded([&] {
    std::optional<JSONValue> replied;
    method.call(object, text, [&replied](std::string reply) { replied = std::move(reply); });
    result = method.replies ? std::move(replied) : std::optional<JSONValue>(nullptr);
  });
  return result;
}

}  // namespace

NSXPCConnection::NSXPCConnection(FileDescriptor socket, std::function<void()> onEnd)
    : socket_(std::move(socket)), onEnd_(std::move(onEnd)), lastActivity_(now()) {}

NSXPCConnection::~NSXPCConnection() {
  invalidate();
  if (thread_.joinable()) {
    thread_.join();
  }
}

void NSXPCConnection::resume() {
  thread_ = std::thread([this] {
    runGuarded([this] { serve(); });
    onEnd_();
  });
}

/// The descriptor stays until the thread has ended, so that its number is nobody else's meanwhile.
void NSXPCConnection::invalidate() {
  isInvalidated_ = true;
  ::shutdown(socket_.get(), SHUT_RDWR);
}

void NSXPCConnection::serve() {
  LineBuffer lines;
  bool isOpen = true;
  while (isOpen && !isInvalidated_ && receive(lines)) {
    while (const auto line = isOpen && !isInvalidated_ ? lines.next() : std::nullopt) {
      isOpen = send(answer(*line));
    }
  }
}

bool NSXPCConnection::receive(LineBuffer& lines) {
  std::array<char, kChunk> chunk;
  ssize_t size = 0;
  do {
    size = ::recv(socket_.get(), chunk.data(), chunk.size(), 0);
  } while (size < 0 && errno == EINTR);
  if (size <= 0) {
    return false;
  }
  lastActivity_ = now();
  lines.append({chunk.data(), static_cast<std::size_t>(size)});
  return true;
}

std::string NSXPCConnection::answer(const LineBuffer::Line& line) {
  if (line.isTooLong) {
    return jsonRPCErrorLine(nullptr, JSONRPCError::kParseError);
  }
  const auto request = readJSONRPCRequest(line.text);
  if (!request) {
    return jsonRPCErrorLine(request.error().id, request.error().error);
  }
  isBusy_ = true;
  auto answered = call(*request);
  isBusy_ = false;
  return request->id ? answered : "";
}

std::string NSXPCConnection::call(const JSONRPCRequest& request) {
  const auto id = request.id.value_or(nullptr);
  const auto* const method = exportedInterface.find(request.method);
  if (method == nullptr || !exportedObject) {
    return jsonRPCErrorLine(id, JSONRPCError::kMethodNotFound);
  }
  const auto text = textArgument(request.params, method->takesText);
  if (!text) {
    return jsonRPCErrorLine(id, JSONRPCError::kInvalidParams);
  }
  if (method->replies && !request.id) {
    return "";  // nobody would get the reply
  }
  const auto result = resultOf(*method, *exportedObject, *text);
  return result ? jsonRPCResultLine(id, *result)
                : jsonRPCErrorLine(id, JSONRPCError::kInternalError);
}

bool NSXPCConnection::send(std::string_view line) const {
  while (!line.empty()) {
    const auto size = ::send(socket_.get(), line.data(), line.size(), MSG_NOSIGNAL);
    if (size < 0 && errno != EINTR) {
      return false;
    }
    line.remove_prefix(size < 0 ? 0 : static_cast<std::size_t>(size));
  }
  return true;
}

}  // namespace platform
