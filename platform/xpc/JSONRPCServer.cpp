#include "platform/xpc/JSONRPCServer.h"

#include <sys/socket.h>

#include <algorithm>
#include <utility>

#include "platform/base/DescriptorLimit.h"
#include "platform/base/SystemError.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/log/NSLog.h"
#include "platform/xpc/Peer.h"

namespace platform {

namespace {

// How long nobody is accepted when the system has no room for a further client.
constexpr double kPauseSeconds = 1;
// The other descriptors are for the process' own work.
constexpr std::size_t kShareOfDescriptors = 8;

std::size_t usualLimit() {
  return std::clamp<std::size_t>(descriptorLimit() / kShareOfDescriptors, 1,
                                 JSONRPCServer::kMaxConnections);
}

/// Others concern one client that was gone before it was accepted (accept(2)).
bool isLackOfRoom(int code) {
  return code == EMFILE || code == ENFILE || code == ENOBUFS || code == ENOMEM;
}

/// A new socket has room for one line.
void turnAway(const FileDescriptor& client) {
  const auto line = jsonRPCErrorLine(nullptr, {JSONRPCError::kNotAllowed});
  ::send(client.get(), line.data(), line.size(), MSG_NOSIGNAL);
}

}  // namespace

JSONRPCServer::JSONRPCServer(JSONRPCService& service)
    : service_(service), limit_(usualLimit()), self_(std::make_shared<JSONRPCServer*>(this)) {}

JSONRPCServer::~JSONRPCServer() {
  for (const auto& connection : connections_) {
    connection->close();
  }
}

std::optional<Error> JSONRPCServer::listen(const std::filesystem::path& path) {
  auto file = ServiceSocket::listen(path, kMode);
  if (!file) {
    return file.error();
  }
  file_.emplace(*std::move(file));
  socket_.open(file_->take());
  if (const auto error = socket_.watch(*this, {true, false})) {
    return Error("cannot accept at " + path.string() + ": " + error.message());
  }
  return std::nullopt;
}

void JSONRPCServer::socketIsReady(bool /*canRead*/, bool /*canWrite*/) {
  FileDescriptor client(::accept4(socket_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (client.isOpen()) {
    accept(std::move(client));
  } else if (isLackOfRoom(errno)) {
    cannotAccept(lastError());
  }
}

void JSONRPCServer::accept(FileDescriptor client) {
  acceptError_ = {};
  const auto peer = Peer::of(client.get());
  if (!peer || !peer->isOurs()) {
    turnAway(client);
    return;
  }
  makeRoom();
  connections_.push_back(std::make_shared<JSONRPCConnection>(std::move(client), service_, *this));
  connections_.back()->begin();
}

void JSONRPCServer::cannotAccept(std::error_code error) {
  if (std::exchange(acceptError_, error) != error) {
    NSLog("JSONRPCServer: cannot accept a client: ", error.message());
  }
  socket_.watch(*this, {});
  pausing_ = Timer::scheduled(kPauseSeconds, false, [this] {
    if (const auto stillError = socket_.watch(*this, {true, false})) {
      cannotAccept(stillError);
    }
  });
}

void JSONRPCServer::makeRoom() {
  if (connections_.size() < limit_) {
    return;
  }
  const auto idlest = std::min_element(
      connections_.begin(), connections_.end(),
      [](const auto& a, const auto& b) { return a->lastActivity() < b->lastActivity(); });
  (*idlest)->close();
  connections_.erase(idlest);
}

void JSONRPCServer::ended(const Connection& connection) { std::erase(connections_, connection); }

void JSONRPCServer::wantsTurn(const Connection& connection) {
  turns_.push_back(connection);
  scheduleTurn();
}

// What is due runs once in an iteration, however often it gives itself again.
void JSONRPCServer::scheduleTurn() {
  if (!turns_.empty() && !std::exchange(isTurnScheduled_, true)) {
    DispatchQueue::global().asyncAfter(0, [weak = std::weak_ptr(self_)] {
      if (const auto self = weak.lock()) {
        (*self)->giveTurn();
      }
    });
  }
}

void JSONRPCServer::giveTurn() {
  isTurnScheduled_ = false;
  const auto connection = turns_.front().lock();
  turns_.pop_front();
  scheduleTurn();
  if (connection) {
    connection->takeTurn();
  }
}

}  // namespace platform
