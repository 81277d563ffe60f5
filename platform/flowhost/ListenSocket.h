#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <tl/expected.hpp>
#include <vector>

#include "platform/flowhost/AnswerPath.h"
#include "platform/udp/SendBacklog.h"
#include "platform/udp/UDPSocket.h"

namespace platform {

/// A UDP socket that serves one address, or any address of the machine when it is bound
/// to the wildcard address; answers leave from the destination of their query. The first of an
/// iteration leaves at once, those after it together. Inside the event loop only.
class ListenSocket final : public AnswerPath,
                           public std::enable_shared_from_this<ListenSocket>,
                           private SocketWatcher {
 public:
  /// Called when datagrams have arrived.
  class Reader {
   public:
    virtual void datagramsArrived(ListenSocket& socket) = 0;

   protected:
    ~Reader() = default;
  };

  /// Answers that wait for room in the kernel. One costs its datagram (64 KiB at most, usually
  /// under one) and some 200 bytes.
  static constexpr std::size_t kMaxWaiting = 256;

  /// Port 0 leaves the choice to the system. What comes tells its interface if `tellsInterface`.
  static tl::expected<std::shared_ptr<ListenSocket>, std::error_code> bind(
      const SocketAddress& address, bool tellsInterface = false);

  /// Begins to tell `reader`, for as long as it lives.
  std::error_code listen(std::weak_ptr<Reader> reader);
  /// Answers that wait fail with ECANCELED, later ones with EBADF.
  void close();

  [[nodiscard]] Transport transport() const override { return Transport::udp; }
  [[nodiscard]] bool isOpen() const override { return socket_.isOpen(); }
  /// The address that is bound, with the port that it has.
  [[nodiscard]] const SocketAddress& address() const { return socket_.address(); }

  /// What has arrived, into `slots`; nothing after an error, which is one log line until a read
  /// goes well again.
  std::span<const ReceivedDatagram> receive(DatagramSlots& slots);

  void send(const DatagramPath& path, Data datagram,
            const std::shared_ptr<PendingWrite>& write) override;

 private:
  void sendAlone(UDPSocket::Answer answer, const std::shared_ptr<PendingWrite>& write);
  void sendCollected();
  UDPSocket::Sent sendTogether(std::span<const UDPSocket::Answer> answers);
  void socketIsReady(bool canRead, bool canWrite) override;
  void logNewError(std::error_code error);
  std::error_code watchAsNeeded();

  UDPSocket socket_;
  std::error_code readError_;  // of the last read
  std::weak_ptr<Reader> reader_;
  SendBacklog waiting_;
  std::uint64_t lastIteration_ = 0;  // in which an answer was sent
  // Each is sent before the queue comes to the report of its write.
  std::vector<UDPSocket::Answer> collected_;
  std::vector<std::shared_ptr<PendingWrite>> writes_;  // of those
};

}  // namespace platform
