#pragma once

#include <sys/socket.h>

#include <optional>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/FileDescriptor.h"
#include "programs/ListenAddress.h"

namespace quillet {

/// A bound UDP socket that reads and answers in batches: one system call for up to `kBatchSize`
/// datagrams each way. Move-only.
class DatagramSocket {
 public:
  static constexpr std::size_t kBatchSize = 64;
  static constexpr std::size_t kMaxDatagramSize = 65535;

  /// Throws std::system_error when the address cannot be bound.
  explicit DatagramSocket(const ListenAddress& address);

  [[nodiscard]] int descriptor() const { return descriptor_.get(); }
  /// The address as bound: a port 0 has become the system's choice.
  [[nodiscard]] const ListenAddress& address() const { return address_; }

  /// Takes what has arrived, at most one batch, without waiting. The views are valid until the next
  /// call.
  std::vector<platform::DataView> receive();

  /// Sets the answer to the datagram of that index of the last batch. Nothing is sent before
  /// `flush`.
  void answer(std::size_t index, platform::Data bytes);

  /// Sends the answers of the last batch in order.
  void flush();

 private:
  /// A datagram of the batch at hand, and the answer to it.
  struct Slot {
    sockaddr_storage peer{};
    socklen_t peerLength = 0;
    platform::Data query = platform::Data(kMaxDatagramSize);
    std::optional<platform::Data> answer;
  };

  ListenAddress address_;
  platform::FileDescriptor descriptor_;
  std::vector<Slot> slots_;
};

}  // namespace quillet
