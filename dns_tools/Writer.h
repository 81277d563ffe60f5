#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <tl/expected.hpp>

#include "dns_tools/EncodeError.h"
#include "dns_tools/Labels.h"
#include "dns_tools/NameSuffix.h"
#include "platform/base/Data.h"

namespace DnsToolsSocket {

/// Appends the wire form of a message, or of a part of it, to a buffer that begins with the
/// message.
///
/// The first failure sticks: `finish` tells it. Until then the buffer is longer than what was
/// written, so that most writes are plain stores.
class Writer {
 public:
  /// Borrows both.
  Writer(platform::Data& onto, Labels& labels)
      : onto_(onto), labels_(labels), begin_(onto.size()), size_(begin_) {}

  /// Cuts the buffer to what was written; on a failure that is of no use.
  tl::expected<void, EncodeError> finish();

  [[nodiscard]] bool failed() const { return error_.has_value(); }
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
  std::uint8_t* extend(std::size_t size);
  void makeRoom(std::size_t size);
  void storeName(std::string_view name, NameSuffix& rest);
  bool writePointer(std::string_view text, NameSuffix& name);
  void writeLabel(std::string_view label);

  platform::Data& onto_;
  Labels& labels_;
  const std::size_t begin_;  // of what is written here
  std::size_t size_;         // of the message so far; the rest of the buffer is room
  std::optional<EncodeError> error_;
};

/// `size` octets more, to be filled by the caller.
inline std::uint8_t* Writer::extend(std::size_t size) {
  if (onto_.size() - size_ < size) {
    makeRoom(size);
  }
  auto* octets = onto_.data() + size_;
  size_ += size;
  return octets;
}

template <std::unsigned_integral... Integers>
void Writer::writeIntegers(Integers... values) {
  auto* next = extend((sizeof(Integers) + ...));
  const auto store = [&next](auto value) {
    for (std::size_t left = sizeof value; left > 0; --left) {
      *next++ = static_cast<std::uint8_t>(value >> (8 * (left - 1)));
    }
  };
  (store(values), ...);
}

}  // namespace DnsToolsSocket
