#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/foundation/Data.h"

namespace quillet {

/// What decoding one message may cost, so that names which point at each other cannot multiply its few
/// octets into much text or much time. Each octet of text costs one, each pointer followed `kPointerCost`.
/// An honest message of 64 KiB stays far below.
class DecodeBudget {
 public:
  static constexpr std::size_t kTotal = 1 << 20;
  static constexpr std::size_t kPointerCost = 16;

  /// False when there is not enough left.
  bool charge(std::size_t cost) {
    if (cost > left_) {
      return false;
    }
    left_ -= cost;
    return true;
  }

 private:
  std::size_t left_ = kTotal;
};

/// The cursor that every decoder reads through: big-endian numbers, runs of bytes and names, never past the
/// end. After the first failure it stays failed, and what it gives means nothing.
class WireReader {
 public:
  /// Reads from `offset` on. Names may point anywhere in `buffer`.
  WireReader(platform::DataView buffer, std::size_t offset, DecodeBudget& budget)
      : buffer_(buffer), offset_(offset), budget_(budget), failed_(offset > buffer.size()) {}

  [[nodiscard]] bool failed() const { return failed_; }
  [[nodiscard]] std::size_t offset() const { return offset_; }
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
  platform::DataView readBytes(std::size_t count) {
    if (remaining() < count) {
      failed_ = true;
      return {};
    }
    const auto bytes = buffer_.subspan(offset_, count);
    offset_ += count;
    return bytes;
  }

  /// The labels joined by "." without a trailing one, "." for the root. Fails when the bytes end before the
  /// name does or a label is not ASCII. A pointer to a name that fails so ends the name at the pointer; a
  /// chain of more than `kMaxPointers`, such as one that goes in a circle, fails.
  std::string readName();

 private:
  // No honest name needs more: 255 octets hold at most 127 labels (RFC 1035 section 2.3.4).
  static constexpr int kMaxPointers = 127;

  bool readLabel(std::size_t& position, std::size_t length, std::string& name);

  const platform::DataView buffer_;
  std::size_t offset_;
  DecodeBudget& budget_;
  bool failed_;
};

}  // namespace quillet
