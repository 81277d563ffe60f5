#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/base/Data.h"

namespace quillet {

/// The cursor that every decoder reads through: big-endian numbers and runs of bytes, never past
/// the end. After the first failure it stays failed, and what it gives means nothing.
class WireReader {
 public:
  /// Reads `buffer` from `offset` on; the buffer must outlive the reader.
  WireReader(platform::DataView buffer, std::size_t offset)
      : buffer_(buffer), offset_(offset), failed_(offset > buffer.size()) {}

  [[nodiscard]] bool failed() const { return failed_; }
  [[nodiscard]] std::uint32_t offset() const { return static_cast<std::uint32_t>(offset_); }
  [[nodiscard]] std::size_t remaining() const { return failed_ ? 0 : buffer_.size() - offset_; }

  std::uint8_t readUInt8() {
    const auto bytes = readBytes(1);
    return failed_ ? std::uint8_t{0} : bytes[0];
  }
  std::uint16_t readUInt16() {
    const auto bytes = readBytes(2);
    return failed_ ? std::uint16_t{0} : static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
  }
  std::uint32_t readUInt32() {
    const std::uint32_t high = readUInt16();
    return high << 16 | readUInt16();
  }
  /// The next `count` bytes, borrowed from the buffer.
  platform::DataView readBytes(std::size_t count) {
    if (remaining() < count) {
      failed_ = true;
      return {};
    }
    const auto bytes = buffer_.subspan(offset_, count);
    offset_ += count;
    return bytes;
  }

 private:
  platform::DataView buffer_;
  std::size_t offset_;
  bool failed_;
};

}  // namespace quillet
