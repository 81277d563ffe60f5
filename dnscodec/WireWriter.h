#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "platform/base/Data.h"

namespace quillet {

/// What every encoder writes through: big-endian numbers, runs of bytes and names, one after
/// another.
class WireWriter {
 public:
  /// Makes room for `expected` octets ahead; more than that costs an allocation, no failure.
  explicit WireWriter(std::size_t expected) : bytes_(expected) {}

  void writeUInt8(std::uint8_t value) { *room(1) = value; }
  void writeUInt16(std::uint16_t value) {
    std::uint8_t* const at = room(2);
    at[0] = static_cast<std::uint8_t>(value >> 8);
    at[1] = static_cast<std::uint8_t>(value);
  }
  void writeUInt32(std::uint32_t value) {
    std::uint8_t* const at = room(4);
    for (int i = 0; i < 4; ++i) {
      at[i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    }
  }
  void writeBytes(platform::DataView bytes) {
    std::copy(bytes.begin(), bytes.end(), room(bytes.size()));
  }

  /// Writes a name without compression. "." is the root; any other text is split at "." and each
  /// piece written as it is, an empty one as a label of length 0. A piece of more than 191 octets
  /// would read as a pointer and is cut there; decoding never yields one.
  void writeName(std::string_view name);

  /// The most octets that `writeName` makes of a name.
  static std::size_t maxNameSize(std::string_view name) { return name.size() + 2; }

  /// Octets written so far.
  [[nodiscard]] std::size_t size() const { return used_; }
  /// What was written; the writer is empty after it.
  platform::Data finish();

 private:
  /// The next `count` octets to write to.
  std::uint8_t* room(std::size_t count) {
    if (bytes_.size() - used_ < count) {
      grow(count);
    }
    return bytes_.data() + std::exchange(used_, used_ + count);
  }
  void grow(std::size_t count);

  platform::Data bytes_;
  std::size_t used_ = 0;
};

}  // namespace quillet
