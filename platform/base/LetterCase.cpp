#include "platform/base/LetterCase.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/base/Data.h"
#include "platform/base/Utf8.h"

namespace platform {

namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// `sequence` is well-formed UTF-8.
void appendFolded(std::string& out, std::string_view sequence) {
  UChar32 character = 0;
  std::size_t i = 0;
  U8_NEXT_UNSAFE(sequence, i, character);
  const auto folded = static_cast<std::uint32_t>(u_foldCase(character, U_FOLD_CASE_DEFAULT));
  std::array<std::uint8_t, U8_MAX_LENGTH> bytes{};
  std::size_t size = 0;
  U8_APPEND_UNSAFE(bytes, size, folded);
  out.append(platform::textOf({bytes.data(), size}));
}

}  // namespace

std::string caseFolded(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const auto length = platform::utf8SequenceLength(text);
    if (length < 2) {
      out.push_back(lower(text.front()));
      text.remove_prefix(1);
    } else {
      appendFolded(out, text.substr(0, length));
      text.remove_prefix(length);
    }
  }
  return out;
}

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return lower(a) == lower(b); });
}

}  // namespace platform
