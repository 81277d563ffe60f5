#pragma once

#include <sys/socket.h>

#include <array>
#include <memory>
#include <span>
#include <system_error>
#include <tl/expected.hpp>
#include <vector>

#include "platform/flowhost/ReceivedDatagram.h"
#include "platform/network/PacketInfo.h"

namespace platform {

/// Room for the datagrams of one read, which one system call fills. Allocated once; the system
/// gives memory to the pages that datagrams have reached.
class DatagramSlots {
 public:
  static constexpr std::size_t kSlots = 64;
  /// No datagram is larger.
  static constexpr std::size_t kSlotSize = 65535;

  using Received = tl::expected<std::span<const ReceivedDatagram>, std::error_code>;

  DatagramSlots();

  /// What has arrived at `socket`, which is bound to `local`; the next call overwrites it. None is
  /// no error.
  Received receive(int socket, const SocketAddress& local);

 private:
  void reset(std::size_t slot, bool withInfo);

  std::unique_ptr<std::uint8_t[]> bytes_;
  std::array<iovec, kSlots> ranges_{};
  std::array<SocketAddress, kSlots> clients_;
  std::array<PacketInfo, kSlots> infos_;
  std::array<mmsghdr, kSlots> messages_{};
  std::vector<ReceivedDatagram> received_;
  std::size_t used_ = kSlots;  // how many messages the last call has changed
  bool hasInfo_ = false;
};

}  // namespace platform
