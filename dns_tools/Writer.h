#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "dns_tools/EncodeError.h"
#include "dns_tools/Labels.h"
#include "platform/foundation/Data.h"

namespace DnsToolsSocket {

/// Appends the wire form of a message, or of a part of it, to a buffer that begins with the
/// message. The first failure sticks in `error`; what is in the buffer then is of no use.
class Writer {
 public:
  /// Borrows both.
  Writer(platform::Data& onto, Labels& labels) : onto_(onto), labels_(labels) {}

  [[nodiscard]] const std::optional<EncodeError>& error() const { return error_; }
  void fail(EncodeError error);

  /// Each one big-endian, in its own size.
  template <std::unsigned_integral... Integers>
  void writeIntegers(Integers... values);
  void writeBytes(platform::DataView bytes);
  /// A domain name, compressed against what the dictionary holds (RFC 1035 section 4.1.4). Empty
  /// pieces between dots are dropped. A label may have up to 255 octets.
  void writeName(std::string_view name);

  /// Leaves room for RDLENGTH; gives the offset of RDATA.
  std::size_t beginData();
  /// Fills in the RDLENGTH of the RDATA that began there.
  void endData(std::size_t begin);

 private:
  bool writePointer(std::string_view text, std::uint64_t hash);
  void writeLabel(std::string_view label);

  platform::Data& onto_;
  Labels& labels_;
  std::optional<EncodeError> error_;
};

template <std::unsigned_integral... Integers>
void Writer::writeIntegers(Integers... values) {
  std::array<std::uint8_t, (sizeof(Integers) + ...)> octets;
  auto* next = octets.data();
  const auto store = [&next](auto value) {
    for (std::size_t left = sizeof value; left > 0; --left) {
      *next++ = static_cast<std::uint8_t>(value >> (8 * (left - 1)));
    }
  };
  (store(values), ...);
  writeBytes(octets);
}

}  // namespace DnsToolsSocket
