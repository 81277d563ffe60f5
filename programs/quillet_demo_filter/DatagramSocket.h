#pragma once

#include <sys/socket.h>

#include <vector>

#include "platform/foundation/Data.h"
#include "programs/ListenAddress.h"

namespace quillet {

/// A bound UDP socket that reads and answers in batches: one system call for up to `kBatchSize`
/// datagrams each way. Move-only; owns its descriptor.
class DatagramSocket {
 public:
  static constexpr std::size_t kBatchSize = 64;

  /// Throws std::system_error when the address cannot be bound.
  explicit DatagramSocket(const ListenAddress& address);
  ~DatagramSocket();
  DatagramSocket(DatagramSocket&& other) noexcept;
  DatagramSocket(const DatagramSocket&) = delete;
  DatagramSocket& operator=(const DatagramSocket&) = delete;
  DatagramSocket& operator=(DatagramSocket&&) = delete;

  [[nodiscard]] int descriptor() const { return descriptor_; }
  /// The address as bound: a port 0 has become the system's choice.
  [[nodiscard]] const ListenAddress& address() const { return address_; }

  /// Takes what has arrived, at most one batch, without waiting. The views are valid until the next
  /// call.
  std::vector<platform::DataView> receive();

  /// Sets the answer to the datagram of that index of the last batch. Nothing is sent before
  /// `flush`.
  void answer(std::size_t index, platform::Data bytes);

  /// Sends the answers of the last batch in order; returns how many the system took.
  std::size_t flush();

 private:
  struct Slot;

  ListenAddress address_;
  int descriptor_;
  std::vector<Slot> slots_;
};

}  // namespace quillet
