#include "platform/log/LogEscape.h"

#include <algorithm>
#include <cstddef>

#include "platform/base/Utf8.h"

namespace platform {

namespace {

bool isPlain(char c) {
  // One comparison: what lies below 0x20 wraps to the upper end.
  return static_cast<unsigned char>(static_cast<unsigned char>(c) - 0x20) < 0x7F - 0x20;
}

constexpr std::size_t kBlock = 32;

bool isBlockPlain(const char* block) {
  // No early exit and no wider type than a byte, so that the compiler looks at 16 bytes at once.
  unsigned char special = 0;
  for (std::size_t i = 0; i < kBlock; ++i) {
    special |= static_cast<unsigned char>(!isPlain(block[i]));
  }
  return special == 0;
}

/// How many characters stand before the first one that is not plain.
std::size_t plainLength(std::string_view text) {
  std::size_t length = 0;
  while (length + kBlock <= text.size() && isBlockPlain(text.data() + length)) {
    length += kBlock;
  }
  while (length < text.size() && isPlain(text[length])) {
    ++length;
  }
  return length;
}

bool isControl(std::string_view sequence) {
  const auto first = static_cast<unsigned char>(sequence.front());
  if (sequence.size() == 1) {
    return first < 0x20 || first == 0x7F;
  }
  // U+0080 to U+009F
  return first == 0xC2 && static_cast<unsigned char>(sequence[1]) < 0xA0;
}

void appendByteEscapes(std::string& out, std::string_view bytes) {
  constexpr char kHex[] = "0123456789ABCDEF";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    const char escape[] = {'\\', 'x', kHex[byte >> 4], kHex[byte & 0xF]};
    out.append(escape, sizeof escape);
  }
}

// Appends what `text` begins with: one character, or one byte that belongs to none. Gives its
// length.
std::size_t appendOne(std::string& out, std::string_view text) {
  const std::size_t length = utf8SequenceLength(text);
  const std::string_view taken = text.substr(0, std::max<std::size_t>(length, 1));
  if (taken == "\n") {
    out.append("\\n");
  } else if (length == 0 || isControl(taken)) {
    appendByteEscapes(out, taken);
  } else {
    out.append(taken);
  }
  return taken.size();
}

}  // namespace

void appendEscaped(std::string& out, std::string_view text) {
  while (!text.empty()) {
    const auto plain = plainLength(text);
    out.append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (!text.empty()) {
      text.remove_prefix(appendOne(out, text));
    }
  }
}

}  // namespace platform
