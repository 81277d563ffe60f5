#include "platform/foundation/Utf8.h"

#include <algorithm>

namespace platform {

namespace {

struct Range {
  unsigned char low;
  unsigned char high;
};

// The allowed second bytes of a sequence, by its first byte (RFC 3629 section 4).
Range secondByteRange(unsigned char first) {
  switch (first) {
    case 0xE0:
      return {0xA0, 0xBF};
    case 0xED:
      return {0x80, 0x9F};
    case 0xF0:
      return {0x90, 0xBF};
    case 0xF4:
      return {0x80, 0x8F};
    default:
      return {0x80, 0xBF};
  }
}

std::size_t announcedLength(unsigned char first) {
  if (first < 0x80) {
    return 1;
  }
  if (first >= 0xC2 && first <= 0xDF) {
    return 2;
  }
  if (first >= 0xE0 && first <= 0xEF) {
    return 3;
  }
  return first >= 0xF0 && first <= 0xF4 ? 4 : 0;
}

}  // namespace

std::size_t utf8SequenceLength(std::string_view text) {
  if (text.empty()) {
    return 0;
  }
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t length = announcedLength(first);
  if (length <= 1) {
    return length;
  }
  if (text.size() < length) {
    return 0;
  }
  Range range = secondByteRange(first);
  for (std::size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < range.low || byte > range.high) {
      return 0;
    }
    range = {0x80, 0xBF};
  }
  return length;
}

bool isValidUtf8(std::string_view text) {
  // Most texts are ASCII; this loop has no early exit, so that the compiler can widen it.
  unsigned char high = 0;
  for (const char c : text) {
    high |= static_cast<unsigned char>(c);
  }
  if (high < 0x80) {
    return true;
  }
  while (!text.empty()) {
    const std::size_t length = utf8SequenceLength(text);
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

std::string repairedUtf8(std::string_view text) {
  if (isValidUtf8(text)) {
    return std::string(text);
  }
  std::string out;
  while (!text.empty()) {
    const std::size_t length = utf8SequenceLength(text);
    if (length == 0) {
      out.append("\xEF\xBF\xBD");
    } else {
      out.append(text.substr(0, length));
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return out;
}

}  // namespace platform
