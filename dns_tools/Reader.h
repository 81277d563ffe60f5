#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "dns_tools/DecodeError.h"
#include "platform/base/Data.h"

namespace DnsToolsSocket {

/// A cursor over the bytes of one message. Nothing else looks at them.
///
/// The first failure sticks: it moves the cursor to the end, every later read gives 0 or nothing,
/// and `error` keeps what failed first. So a record is read straight through and asked once.
class Reader {
 public:
  /// What the names of a message may cost for each octet of it: one for each octet of a label, its
  /// length octet included, and one for each pointer followed. It bounds what pointers can
  /// multiply, in time and in memory. A name of 255 octets (RFC 1035 section 2.3.4) costs 381 at
  /// most and takes part in the message with 6 octets at least, so that no message that keeps to
  /// the RFC comes near the bound.
  static constexpr std::size_t kNameCostPerOctet = 64;

  explicit Reader(platform::DataView message)
      : message_(message), nameBudget_(message.size() * kNameCostPerOctet) {}

  [[nodiscard]] const std::optional<DecodeError>& error() const { return error_; }
  [[nodiscard]] std::size_t position() const { return position_; }
  [[nodiscard]] std::size_t remaining() const { return message_.size() - position_; }

  void fail(DecodeError error);

  /// Big-endian.
  std::uint16_t readUInt16();
  std::uint32_t readUInt32();
  /// Passes over `size` octets, or to the end.
  void skip(std::size_t size);
  /// The next `size` octets, borrowed; fails with `tooFew` when there are fewer.
  platform::DataView readBytes(std::size_t size, DecodeError tooFew);
  /// A character-string (RFC 1035 section 3.3), borrowed.
  std::string_view readCharacterString();
  /// A domain name, compression pointers followed (RFC 1035 section 4.1.4): its labels, each with a
  /// "." after it; the root is ".". A dot within a label is kept as it is. Of labels reached
  /// through a pointer only the non-empty pieces between dots count. Lengths from 64 to 191 are
  /// lengths.
  std::string readName();

  /// Reads RDLENGTH and gives the position at which RDATA is to end, which may lie past the end.
  std::size_t readDataEnd();
  /// Fails unless the cursor is exactly there.
  void expectDataEnd(std::size_t end);

 private:
  std::optional<std::size_t> readPointer(std::size_t nameStart);
  platform::DataView readLabels();
  void spend(std::size_t cost);

  const platform::DataView message_;
  std::size_t position_ = 0;
  std::size_t nameBudget_;
  std::optional<DecodeError> error_;
};

inline std::uint16_t Reader::readUInt16() {
  if (remaining() < 2) {
    fail(DecodeError::invalidIntegerSize);
    return 0;
  }
  const auto* octets = message_.data() + position_;
  position_ += 2;
  return static_cast<std::uint16_t>(octets[0] << 8 | octets[1]);
}

inline std::uint32_t Reader::readUInt32() {
  if (remaining() < 4) {
    fail(DecodeError::invalidIntegerSize);
    return 0;
  }
  const std::uint32_t high = readUInt16();
  return high << 16 | readUInt16();
}

inline platform::DataView Reader::readBytes(std::size_t size, DecodeError tooFew) {
  if (remaining() < size) {
    fail(tooFew);
    return {};
  }
  const auto bytes = message_.subspan(position_, size);
  position_ += size;
  return bytes;
}

}  // namespace DnsToolsSocket
