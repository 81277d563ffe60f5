#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace platform {

/// The length in bytes (1 to 4) of the well-formed UTF-8 sequence that `text` begins with, or 0
/// when it begins with none (RFC 3629 section 4: no overlong forms, no surrogates, nothing above
/// U+10FFFF) or is empty.
std::size_t utf8SequenceLength(std::string_view text);

/// Whether all of `text` is ASCII; eight bytes at a time.
inline bool isAscii(std::string_view text) {
  std::uint64_t bits = 0;
  std::size_t i = 0;
  for (std::uint64_t word = 0; text.size() - i >= sizeof word; i += sizeof word) {
    std::memcpy(&word, text.data() + i, sizeof word);
    bits |= word;
  }
  for (; i < text.size(); ++i) {
    bits |= static_cast<unsigned char>(text[i]);
  }
  return (bits & 0x8080808080808080) == 0;
}

/// Whether all of `text` is well-formed UTF-8.
bool isValidUtf8(std::string_view text);

/// `text` with every byte that is not part of a well-formed sequence replaced by U+FFFD.
std::string repairedUtf8(std::string_view text);

}  // namespace platform
