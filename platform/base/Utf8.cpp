#include "platform/base/Utf8.h"

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

/// How many bytes of the sequence of `length` that `text` announces are there and may stand where
/// they do; at least 1.
std::size_t wellFormedPart(std::string_view text, std::size_t length) {
  Range range = secondByteRange(static_cast<unsigned char>(text.front()));
  std::size_t part = 1;
  while (part < std::min(length, text.size())) {
    const auto byte = static_cast<unsigned char>(text[part]);
    if (byte < range.low || byte > range.high) {
      break;
    }
    range = {0x80, 0xBF};
    ++part;
  }
  return part;
}

}  // namespace

std::size_t utf8SequenceLength(std::string_view text) {
  if (text.empty()) {
    return 0;
  }
  const std::size_t length = announcedLength(static_cast<unsigned char>(text.front()));
  return length <= 1 || wellFormedPart(text, length) == length ? length : 0;
}

bool isValidUtf8(std::string_view text) {
  if (isAscii(text)) {
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
    const std::size_t length = announcedLength(static_cast<unsigned char>(text.front()));
    const std::size_t part = wellFormedPart(text, length);
    if (part == length) {
      out.append(text.substr(0, part));
    } else {
      out.append("\xEF\xBF\xBD");
    }
    text.remove_prefix(part);
  }
  return out;
}

}  // namespace platform
