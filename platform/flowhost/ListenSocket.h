#pragma once

#include <functional>
#include <list>
#include <memory>
#include <tl/expected.hpp>

#include "platform/base/Error.h"
#include "platform/dispatch/WatchedSocket.h"
#include "platform/flowhost/DatagramSlots.h"
#include "platform/flowhost/FlowPath.h"
#include "platform/network/OwnSockets.h"
#include "platform/networkextension/NWHostEndpoint.h"

namespace platform {

/// A UDP socket that clients ask at one address, or at any address of the machine when it is bound
/// to the wildcard address; answers leave from the address that was asked. Inside the event loop
/// only.
class ListenSocket final : public std::enable_shared_from_this<ListenSocket>,
                           private SocketWatcher {
 public:
  /// Called when datagrams have arrived.
  class Reader {
   public:
    virtual void datagramsArrived(ListenSocket& socket) = 0;

   protected:
    ~Reader() = default;
  };

  /// Called once with the error of the send, 0 for none.
  using SendCompletion = std::function<void(int)>;

  /// Answers that wait for room in the kernel. One costs its datagram (64 KiB at most, usually
  /// under one) and some 200 bytes.
  static constexpr std::size_t kMaxWaiting = 256;

  /// Binds `endpoint`; port 0 leaves the choice to the system. The error names the endpoint and
  /// says what is wrong: `cannot listen on 127.0.0.1:5300: Address already in use`.
  static tl::expected<std::shared_ptr<ListenSocket>, Error> bind(const NWHostEndpoint& endpoint);

  ListenSocket(FileDescriptor socket, const SocketAddress& address);

  /// Begins to tell `reader`, for as long as it lives.
  std::optional<Error> listen(std::weak_ptr<Reader> reader);
  /// Answers that wait fail with ECANCELED, later ones with EBADF.
  void close();

  [[nodiscard]] bool isOpen() const { return socket_.isOpen(); }
  /// The address that is bound, with the port that it has.
  [[nodiscard]] const SocketAddress& address() const { return address_; }

  /// What has arrived, into `slots`; nothing after an error, which is one log line until a read
  /// goes well again.
  std::span<const ReceivedDatagram> receive(DatagramSlots& slots);

  /// Sends from one end of `path` to the other. The error, 0 for none; EAGAIN when it has to wait.
  int send(const FlowPath& path, DataView datagram);
  /// Sends when there is room, after what waits already. False when too much does.
  bool sendLater(const FlowPath& path, Data datagram, SendCompletion completion);

 private:
  struct Waiting {
    FlowPath path;
    Data datagram;
    SendCompletion completion;
  };

  void socketIsReady(bool canRead, bool canWrite) override;
  void logNewError(std::error_code error);
  int sendNow(const FlowPath& path, DataView datagram);
  void sendWaiting();
  std::error_code watchAsNeeded();

  WatchedSocket socket_;
  const SocketAddress address_;
  OwnSockets::Entry served_;   // while it is open
  std::error_code readError_;  // of the last read
  std::weak_ptr<Reader> reader_;
  std::list<Waiting> waiting_;
};

/// The endpoint as texts.
NWHostEndpoint endpointFrom(const SocketAddress& address);

}  // namespace platform
