#include "platform/xpc/NSXPCListener.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/RunGuarded.h"
#include "platform/foundation/NSLog.h"

namespace platform {

namespace {

// How long nobody is accepted when the system has no descriptors left.
constexpr double kPauseSeconds = 1;

}  // namespace

NSXPCListener::NSXPCListener(std::string machServiceName)
    : machServiceName_(std::move(machServiceName)), self_(std::make_shared<NSXPCListener*>(this)) {}

NSXPCListener::~NSXPCListener() {
  socket_.close();
  for (const auto& connection : connections_) {
    connection->invalidate();
  }
}

void NSXPCListener::resume() {
  auto file = ServiceSocket::listen(ServiceSocket::pathOf(machServiceName_));
  if (!file) {
    NSLog("NSXPCListener: ", file.error());
    return;
  }
  file_.emplace(*std::move(file));
  socket_.open(file_->take());
  watch();
}

void NSXPCListener::watch() {
  if (const auto error = socket_.watch(*this, {true, false})) {
    NSLog("NSXPCListener: cannot accept clients: ", error.message());
  }
}

void NSXPCListener::socketIsReady(bool /*canRead*/, bool /*canWrite*/) {
  FileDescriptor client(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (client.isOpen()) {
    accept(std::move(client));
  } else if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
    pause(errno);
  }
}

void NSXPCListener::pause(int error) {
  NSLog("NSXPCListener: cannot accept a client: ", ::strerrordesc_np(error));
  socket_.watch(*this, {});
  DispatchQueue::global().asyncAfter(kPauseSeconds, [weak = std::weak_ptr(self_)] {
    if (const auto self = weak.lock()) {
      (*self)->watch();
    }
  });
}

void NSXPCListener::accept(FileDescriptor client) {
  const auto owner = delegate.lock();
  if (!owner) {
    return;
  }
  if (!makeRoom()) {
    NSLog("NSXPCListener: a client is turned away, there are ", connections_.size(), " others");
    return;
  }
  const auto place = connections_.emplace(connections_.end());
  *place =
      std::make_unique<NSXPCConnection>(std::move(client), [weak = std::weak_ptr(self_), place] {
        DispatchQueue::global().async([weak, place] {
          if (const auto self = weak.lock()) {
            (*self)->connections_.erase(place);
          }
        });
      });
  bool isWanted = false;
  runGuarded([&] { isWanted = owner->listener(*this, **place); });
  if (!(*place)->isResumed()) {
    connections_.erase(place);
  } else if (!isWanted) {
    (*place)->invalidate();  // it goes when its thread ends
  }
}

/// The one that makes room ends a little later.
bool NSXPCListener::makeRoom() {
  std::size_t count = 0;
  NSXPCConnection* idlest = nullptr;
  for (const auto& connection : connections_) {
    if (connection->isInvalidated()) {
      continue;
    }
    ++count;
    const bool isIdler = idlest == nullptr || connection->lastActivity() < idlest->lastActivity();
    if (!connection->isBusy() && isIdler) {
      idlest = connection.get();
    }
  }
  if (count >= kMaxConnections && idlest != nullptr) {
    idlest->invalidate();
  }
  return count < kMaxConnections || idlest != nullptr;
}

}  // namespace platform
