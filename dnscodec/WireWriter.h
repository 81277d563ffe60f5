#pragma once

#include <cstdint>
#include <string_view>

#include "platform/foundation/Data.h"

namespace quillet {

/// What every encoder writes through: big-endian numbers, runs of bytes and names, appended to a message.
class WireWriter {
 public:
  /// Appends to `out`.
  explicit WireWriter(platform::Data& out) : out_(out) {}

  void writeUInt8(std::uint8_t value) { out_.push_back(value); }
  void writeUInt16(std::uint16_t value) {
    const std::uint8_t bytes[] = {static_cast<std::uint8_t>(value >> 8),
                                  static_cast<std::uint8_t>(value)};
    writeBytes(bytes);
  }
  void writeUInt32(std::uint32_t value) {
    writeUInt16(static_cast<std::uint16_t>(value >> 16));
    writeUInt16(static_cast<std::uint16_t>(value));
  }
  void writeBytes(platform::DataView bytes) { out_.insert(out_.end(), bytes.begin(), bytes.end()); }

  /// Without compression. "." is the root; any other text is split at ".", each piece written as it is, an
  /// empty one as a label of length 0. A piece of more than 191 octets would read as a pointer and is cut
  /// there; decoding never yields one.
  void writeName(std::string_view name);

 private:
  platform::Data& out_;
};

}  // namespace quillet
