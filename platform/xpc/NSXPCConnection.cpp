#include "platform/xpc/NSXPCConnection.h"

#include <sys/ioctl.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <optional>
#include <utility>

#include "platform/base/Clock.h"
#include "platform/dispatch/RunGuarded.h"
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
    : socket_(std::move(socket)), onEnd_(std::move(onEnd)), start_(now()) {}

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

void NSXPCConnection::finish() {
  isFinishing_ = true;
  ::shutdown(socket_.get(), SHUT_RD);  // what has come stays to be read
}

bool NSXPCConnection::isIdle() const {
  int unread = 0;
  return hasServedAll_ && ::ioctl(socket_.get(), FIONREAD, &unread) == 0 && unread == 0;
}

void NSXPCConnection::serve() {
  LineBuffer lines;
  while (!isInvalidated_ && receive(lines) && serveLines(lines)) {
    hasServedAll_ = lines.isEmpty();
  }
}

/// False when the client can be served no more.
bool NSXPCConnection::serveLines(LineBuffer& lines) {
  while (const auto line = lines.next()) {
    if (isInvalidated_ || !send(answer(*line))) {
      return false;
    }
  }
  return true;
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
  hasServedAll_ = false;
  lastActivity_ = now();
  lines.append({chunk.data(), static_cast<std::size_t>(size)});
  return true;
}

std::string NSXPCConnection::answer(const LineBuffer::Line& line) {
  if (line.isTooLong) {
    return jsonRPCErrorLine(nullptr, {JSONRPCError::kParseError});
  }
  const auto request = readJSONRPCRequest(line.text);
  if (!request) {
    return jsonRPCErrorLine(request.error().id, {request.error().error});
  }
  stage_ = Stage::calling;
  auto answered = call(*request);
  stage_ = Stage::receiving;
  return request->id ? answered : "";
}

std::string NSXPCConnection::call(const JSONRPCRequest& request) {
  const auto id = request.id.value_or(nullptr);
  const auto* const method = exportedInterface.find(request.method);
  if (method == nullptr || !exportedObject) {
    return jsonRPCErrorLine(id, {JSONRPCError::kMethodNotFound});
  }
  const auto text = textArgument(request.params, method->takesText);
  if (!text) {
    return jsonRPCErrorLine(id, {JSONRPCError::kInvalidParams});
  }
  if (method->replies && !request.id) {
    return "";  // nobody would get the reply
  }
  const auto result = resultOf(*method, *exportedObject, *text);
  return result ? jsonRPCResultLine(id, *result)
                : jsonRPCErrorLine(id, {JSONRPCError::kInternalError});
}

bool NSXPCConnection::send(std::string_view line) {
  lastActivity_ = now();  // a call may have taken long, which is no fault of the client's
  stage_ = Stage::sending;
  while (!line.empty()) {
    const auto size = ::send(socket_.get(), line.data(), line.size(), MSG_NOSIGNAL);
    if (size < 0 && errno != EINTR) {
      return false;
    }
    line.remove_prefix(size < 0 ? 0 : static_cast<std::size_t>(size));
    lastActivity_ = now();
  }
  stage_ = Stage::receiving;
  return true;
}

}  // namespace platform
