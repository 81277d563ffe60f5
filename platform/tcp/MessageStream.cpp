#include "platform/tcp/MessageStream.h"

#include <netinet/tcp.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/base/Clock.h"
#include "platform/udp/SocketOption.h"

namespace platform {

namespace {

bool isTransient(int code) { return code == EAGAIN || code == EINTR; }

/// An answer does not wait for the acknowledgement of the one before it.
void sendAtOnce(int socket) { setOption(socket, IPPROTO_TCP, TCP_NODELAY, 1); }

}  // namespace

void MessageStream::open(FileDescriptor socket, std::weak_ptr<Owner> owner) {
  sendAtOnce(socket.get());
  socket_.open(std::move(socket));
  owner_ = std::move(owner);
  touch();
}

std::error_code MessageStream::connect(const SocketAddress& peer, std::weak_ptr<Owner> owner) {
  FileDescriptor socket(::socket(peer.family(), SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  SocketAddress own;
  if (!socket.isOpen() ||
      (::connect(socket.get(), peer.data(), peer.size()) != 0 && errno != EINPROGRESS) ||
      own.readOwnSideOf(socket.get())) {
    return lastError();
  }
  own_.emplace(own, OwnSockets::Use::exchange, OwnSockets::tcp());
  isConnecting_ = true;
  open(std::move(socket), std::move(owner));
  watchAsNeeded();
  return {};
}

void MessageStream::close() {
  socket_.close();
  own_.reset();
  framing_ = {};
  loseWaiting(std::make_error_code(std::errc::operation_canceled));
}

void MessageStream::setReading(bool isReading) {
  isReading_ = isReading;
  watchAsNeeded();
}

void MessageStream::watchAsNeeded() {
  if (isOpen() && !error_) {
    if (const auto error = socket_.watch(*this, {isReading(), isConnecting_ || waiting_ > 0})) {
      fail(error);
    }
  }
}

void MessageStream::socketIsReady(bool canRead, bool canWrite) {
  const auto owner = owner_.lock();
  if (!owner) {
    return;
  }
  if (isConnecting_) {
    finishConnecting();
  }
  if (canWrite) {
    flush();
  }
  if (canRead && isReading()) {
    read();
  }
  watchAsNeeded();
  owner->streamChanged();
}

void MessageStream::finishConnecting() {
  isConnecting_ = false;
  if (const auto error = takeError(socket_.get())) {
    fail(error);
  }
}

void MessageStream::read() {
  std::array<std::uint8_t, kReadSize> room;
  const auto size = ::recv(socket_.get(), room.data(), room.size(), MSG_DONTWAIT);
  if (size > 0) {
    framing_.append({room.data(), static_cast<std::size_t>(size)});
  } else if (size == 0) {
    hasEnded_ = true;
  } else if (!isTransient(errno)) {
    fail(lastError());
  }
}

std::optional<Data> MessageStream::next() {
  auto message = framing_.next();
  if (message) {
    touch();
  }
  return message;
}

void MessageStream::send(DataView message, Sent sent) {
  auto framed = MessageFraming::framed(message);
  if (!framed || !isOpen() || error_) {
    sent(!framed  ? std::make_error_code(std::errc::message_size)
         : error_ ? error_
                  : std::make_error_code(std::errc::bad_file_descriptor));
    return;
  }
  touch();
  waiting_ += framed->size();
  outgoing_.push_back({*std::move(framed), 0, std::move(sent)});
  if (outgoing_.size() == 1 && !isConnecting_) {
    flush();
  }
  watchAsNeeded();
}

void MessageStream::flush() {
  while (!outgoing_.empty()) {
    if (!sendWhole(outgoing_.front())) {
      return;
    }
    const auto sent = std::move(outgoing_.front().sent);
    outgoing_.pop_front();
    sent({});
  }
}

bool MessageStream::sendWhole(Outgoing& message) {
  const auto rest = DataView(message.octets).subspan(message.done);
  const auto size = ::send(socket_.get(), rest.data(), rest.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  if (size < 0) {
    if (!isTransient(errno)) {
      fail(lastError());  // with it the message is gone
    }
    return false;
  }
  message.done += static_cast<std::size_t>(size);
  waiting_ -= static_cast<std::size_t>(size);
  touch();
  return message.done == message.octets.size();
}

/// The owner hears of it even where nothing happens at the socket any more.
void MessageStream::fail(std::error_code error) {
  error_ = error;
  loseWaiting(error);
  DispatchQueue::global().async([weak = owner_] {
    if (const auto owner = weak.lock()) {
      owner->streamChanged();
    }
  });
}

void MessageStream::loseWaiting(std::error_code error) {
  waiting_ = 0;
  for (const auto& message : std::exchange(outgoing_, {})) {
    message.sent(error);
  }
}

void MessageStream::touch() { lastActivity_ = Clock::shared().uptimeNanoseconds(); }

}  // namespace platform
