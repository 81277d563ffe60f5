#include "platform/xpc/NSXPCListener.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/base/Clock.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/RunGuarded.h"
#include "platform/log/NSLog.h"
#include "platform/xpc/ServicePlaces.h"

namespace platform {

namespace {

// How long nobody is accepted when the system has no descriptors left.
constexpr double kPauseSeconds = 1;
// How often to look whether a client may go, when none may and none ends by itself.
constexpr double kLookAgainSeconds = 0.1;

constexpr auto kPatience = static_cast<std::uint64_t>(NSXPCListener::kPatienceSeconds * 1e9);

/// Why a client is to make room.
enum class Reason { idle, stuck, silent, longConnected, none };

/// The reason and since when it holds. The client with the lowest goes first.
using Turn = std::pair<Reason, std::uint64_t>;

constexpr Turn kStays{Reason::none, 0};

Turn turnOf(const NSXPCConnection& client, std::uint64_t now) {
  const auto start = client.start();
  const auto lastActivity = client.lastActivity();
  const auto isLongAgo = [now](std::uint64_t time) { return now > time + kPatience; };
  if (client.isSending() && isLongAgo(lastActivity)) {
    return {Reason::stuck, lastActivity};
  }
  if (client.isEnding()) {
    return kStays;
  }
  if (client.isIdle()) {
    return {Reason::idle, lastActivity};
  }
  if (!client.isBusy() && isLongAgo(lastActivity)) {
    return {Reason::silent, lastActivity};
  }
  return isLongAgo(start) ? Turn{Reason::longConnected, start} : kStays;
}

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
  auto file = ServiceSocket::listen(servicePlaces(machServiceName_).front());
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
  if (connections_.size() >= kMaxConnections) {
    makeRoom();
    pause(kLookAgainSeconds);
    return;
  }
  FileDescriptor client(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (client.isOpen()) {
    accept(std::move(client));
  } else if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
    NSLog("NSXPCListener: cannot accept a client: ", ::strerrordesc_np(errno));
    pause(kPauseSeconds);
  }
}

void NSXPCListener::pause(double seconds) {
  socket_.watch(*this, {});
  pausing_ = Timer::scheduled(seconds, false, [this] { watch(); });
}

void NSXPCListener::accept(FileDescriptor client) {
  const auto owner = delegate.lock();
  if (!owner) {
    return;
  }
  const auto place = connections_.emplace(connections_.end());
  *place =
      std::make_unique<NSXPCConnection>(std::move(client), [weak = std::weak_ptr(self_), place] {
        DispatchQueue::global().async([weak, place] {
          if (const auto self = weak.lock()) {
            (*self)->ended(place);
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

void NSXPCListener::ended(Connections::iterator place) {
  connections_.erase(place);
  watch();
}

/// The one that makes room is gone a little later.
void NSXPCListener::makeRoom() {
  const auto now = Clock::shared().uptimeNanoseconds();
  Turn lowest = kStays;
  NSXPCConnection* leaving = nullptr;
  for (const auto& connection : connections_) {
    if (const auto turn = turnOf(*connection, now); turn < lowest) {
      lowest = turn;
      leaving = connection.get();
    }
  }
  if (leaving == nullptr) {
    return;
  }
  if (lowest.first == Reason::stuck) {
    leaving->invalidate();
  } else {
    leaving->finish();
  }
}

}  // namespace platform
