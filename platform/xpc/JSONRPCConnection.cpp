#include "platform/xpc/JSONRPCConnection.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/base/Clock.h"
#include "platform/dispatch/RunGuarded.h"

namespace platform {

namespace {

constexpr std::size_t kChunk = 16UL * 1024;

std::uint64_t now() { return Clock::shared().uptimeNanoseconds(); }

bool isTemporary(int code) { return code == EAGAIN || code == EWOULDBLOCK || code == EINTR; }

/// By name, or none; a list is no such thing.
std::optional<JSONObject> paramsOf(const JSONRPCRequest& request) {
  if (!request.params) {
    return JSONObject();
  }
  const auto* params = request.params->get_ptr<const JSONObject*>();
  return params != nullptr ? std::optional(*params) : std::nullopt;
}

}  // namespace

JSONRPCConnection::JSONRPCConnection(FileDescriptor socket, JSONRPCService& service, Owner& owner)
    : socket_(std::move(socket)), service_(service), owner_(owner), lastActivity_(now()) {}

void JSONRPCConnection::begin() { goOn(); }

void JSONRPCConnection::close() {
  socket_.close();
  std::string().swap(waiting_);
  text_.reset();
}

void JSONRPCConnection::end() {
  if (socket_.isOpen()) {
    close();
    owner_.ended(shared_from_this());
  }
}

void JSONRPCConnection::socketIsReady(bool canRead, bool canWrite) {
  const auto alive = shared_from_this();
  if (canWrite) {
    flush();
  }
  if (canRead && socket_.interest().reading) {
    receive();
  }
  goOn();
}

void JSONRPCConnection::receive() {
  std::array<char, kChunk> chunk;
  const auto size = ::recv(socket_.get(), chunk.data(), chunk.size(), 0);
  if (size > 0) {
    lastActivity_ = now();
    lines_.append({chunk.data(), static_cast<std::size_t>(size)});
    mayHaveLine_ = true;
  } else if (size == 0) {
    isEnding_ = true;
  } else if (!isTemporary(errno)) {
    end();
  }
}

/// Asks for what there is to be done next.
void JSONRPCConnection::goOn() {
  if (!socket_.isOpen()) {
    return;
  }
  if (!waiting_.empty()) {
    socket_.watch(*this, {false, true});
  } else if (text_ || mayHaveLine_) {
    socket_.watch(*this, {});
    if (!std::exchange(hasTurn_, true)) {
      owner_.wantsTurn(shared_from_this());
    }
  } else if (isEnding_ || socket_.watch(*this, {true, false})) {
    end();
  }
}

void JSONRPCConnection::takeTurn() {
  const auto alive = shared_from_this();
  hasTurn_ = false;
  if (!socket_.isOpen()) {
    return;
  }
  if (text_) {
    sendPiece();
  } else if (const auto line = lines_.next()) {
    answer(*line);
  } else {
    mayHaveLine_ = false;
  }
  flush();
  goOn();
}

void JSONRPCConnection::answer(const LineBuffer::Line& line) {
  if (line.isTooLong) {
    waiting_ += jsonRPCErrorLine(nullptr, {JSONRPCError::kParseError});
    return;
  }
  const auto request = readJSONRPCRequest(line.text);
  if (request) {
    call(*request);
  } else {
    waiting_ += jsonRPCErrorLine(request.error().id, {request.error().error});
  }
}

void JSONRPCConnection::call(const JSONRPCRequest& request) {
  tl::expected<JSONRPCResult, JSONRPCFault> result =
      tl::unexpected(JSONRPCFault{JSONRPCError::kInternalError});
  if (const auto params = paramsOf(request)) {
    runGuarded([&] { result = service_.call(request.method, *params, shared_from_this()); });
  } else {
    result = tl::unexpected(JSONRPCFault{JSONRPCError::kInvalidParams});
  }
  if (!request.id) {
    return;
  }
  if (!result) {
    waiting_ += jsonRPCErrorLine(*request.id, result.error());
  } else if (const auto* value = std::get_if<JSONValue>(&*result)) {
    waiting_ += jsonRPCResultLine(*request.id, *value);
  } else {
    waiting_ += jsonRPCTextHead(*request.id);
    text_ = std::get<JSONRPCTextSource>(*std::move(result));
  }
}

/// A source that fails ends its text.
void JSONRPCConnection::sendPiece() {
  std::optional<std::string> piece;
  runGuarded([&] { piece = (*text_)(); });
  if (piece) {
    waiting_ += jsonRPCTextPart(*piece);
  } else {
    waiting_ += kJSONRPCTextTail;
    text_.reset();
  }
}

void JSONRPCConnection::notify(std::string_view lines, std::uint64_t count) {
  if (!socket_.isOpen()) {
    return;
  }
  if (text_ || waiting_.size() + lines.size() > kMaxWaiting) {
    lost_ += count;
    return;
  }
  const bool isAtRest = waiting_.empty();
  tellLoss();
  waiting_ += lines;
  if (isAtRest) {  // else it is told when there is room
    flush();
    goOn();
  }
}

void JSONRPCConnection::flush() {
  sendWaiting();
  if (waiting_.empty() && !text_ && lost_ > 0 && socket_.isOpen()) {
    tellLoss();
    sendWaiting();
  }
}

void JSONRPCConnection::tellLoss() {
  if (const auto lost = std::exchange(lost_, 0); lost > 0) {
    waiting_ += jsonRPCNotificationLine("lost", {{"lost", lost}});
  }
}

void JSONRPCConnection::sendWaiting() {
  if (waiting_.empty() || !socket_.isOpen()) {
    return;
  }
  const auto size = ::send(socket_.get(), waiting_.data(), waiting_.size(), MSG_NOSIGNAL);
  if (size < 0) {
    if (!isTemporary(errno)) {
      end();
    }
    return;
  }
  lastActivity_ = now();
  if (static_cast<std::size_t>(size) == waiting_.size()) {
    std::string().swap(waiting_);  // a long answer's memory does not stay
  } else {
    waiting_.erase(0, static_cast<std::size_t>(size));
  }
}

}  // namespace platform
