#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// An owned byte string: one datagram, the RDATA of a record.
using Data = std::vector<std::uint8_t>;

/// A borrowed run of bytes; valid only while its owner is.
using DataView = std::span<const std::uint8_t>;

/// The bytes of a text, borrowed.
inline DataView bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// The bytes read as text, borrowed and unchecked: the result need not be valid UTF-8.
inline std::string_view textOf(DataView bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace platform
