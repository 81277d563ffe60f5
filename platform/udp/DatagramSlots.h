#pragma once

#include <sys/socket.h>

#include <memory>
#include <span>
#include <system_error>
#include <tl/expected.hpp>
#include <vector>

#include "platform/udp/PacketInfo.h"
#include "platform/udp/ReceivedDatagram.h"

namespace platform {

/// Room for the datagrams of one read, which one system call fills. Allocated once; the system
/// gives memory to the pages that datagrams have reached.
class DatagramSlots {
 public:
  static constexpr std::size_t kMany = 64;
  /// No datagram is larger.
  static constexpr std::size_t kSlotSize = 65535;

  using Received = tl::expected<std::span<const ReceivedDatagram>, std::error_code>;

  explicit DatagramSlots(std::size_t count = kMany);

  /// What has arrived at `socket`, which is bound to `local`; the next call overwrites it. None is
  /// no error. `tellsInterface` is that of its `UDPSocket::Binding`.
  Received receive(int socket, const SocketAddress& local, bool tellsInterface);

 private:
  struct Slot {
    SocketAddress client;
    PacketInfo info;
    iovec range{};
  };

  void prepare(bool withInfo);
  void reset(std::size_t slot, bool withInfo);
  [[nodiscard]] ReceivedDatagram datagram(std::size_t slot, const SocketAddress& local,
                                          bool tellsInterface);

  std::unique_ptr<std::uint8_t[]> bytes_;
  std::vector<Slot> slots_;
  std::vector<mmsghdr> messages_;
  std::vector<ReceivedDatagram> received_;
  std::size_t used_;  // how many messages the last call has changed
  bool hasInfo_ = false;
};

}  // namespace platform
