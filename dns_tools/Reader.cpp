#include "dns_tools/Reader.h"

#include <algorithm>
#include <optional>

#include "dns_tools/NameText.h"
#include "platform/base/Utf8.h"

namespace DnsToolsSocket {

using platform::DataView;

namespace {

constexpr std::uint8_t kLargestLabelLength = 0xBF;
constexpr unsigned kPointerOffsetMask = 0x3FFF;

// Labels are short and nearly always plain: what there is to know of one is found out in one pass.
struct LabelBytes {
  explicit LabelBytes(std::string_view label) {
    for (const char c : label) {
      bits |= static_cast<unsigned char>(c);
      hasDot |= c == '.';
    }
  }

  [[nodiscard]] bool isAscii() const { return bits < 0x80; }

  unsigned char bits = 0;
  bool hasDot = false;
};

}  // namespace

void Reader::fail(DecodeError error) {
  if (!error_) {
    error_ = error;
  }
  position_ = message_.size();
}

void Reader::skip(std::size_t size) { position_ += std::min(size, remaining()); }

std::string_view Reader::readCharacterString() {
  if (remaining() == 0) {
    fail(DecodeError::invalidIntegerSize);
    return {};
  }
  const std::size_t size = message_[position_++];
  const auto text = platform::textOf(readBytes(size, DecodeError::invalidLabelSize));
  if (!platform::isValidUtf8(text)) {
    fail(DecodeError::unicodeDecodingError);
    return {};
  }
  return text;
}

inline void Reader::spend(std::size_t cost) {
  if (cost > nameBudget_) {
    fail(DecodeError::invalidLabelSize);
    return;
  }
  nameBudget_ -= cost;
}

/// A pointer leads towards the start of the message, always: it points before the part of the name
/// that it ends. So every chain ends too.
inline std::optional<std::size_t> Reader::readPointer(std::size_t nameStart) {
  const std::size_t offset = readUInt16() & kPointerOffsetMask;
  if (!error_ && offset >= nameStart) {
    fail(DecodeError::invalidLabelOffset);
  }
  spend(1);
  return error_ ? std::nullopt : std::optional(offset);
}

/// Into pieces at its dots, if that is asked for.
inline void Reader::readLabel(std::size_t length, bool inPieces, NameText& name) {
  const auto label = platform::textOf(readBytes(length, DecodeError::invalidLabelSize));
  const LabelBytes bytes(label);
  if (!bytes.isAscii() && !platform::isValidUtf8(label)) {
    fail(DecodeError::unicodeDecodingError);
  }
  spend(1 + length);
  if (inPieces && bytes.hasDot) {
    name.appendPieces(label);
  } else {
    name.append(label);
  }
}

std::string Reader::readName() {
  NameText text;
  std::size_t start = position_;  // of the name, or of the part of it that a pointer led to
  std::size_t end = 0;            // after the first pointer; 0 before there is one
  while (remaining() > 0) {
    const std::size_t length = message_[position_];
    if (length > kLargestLabelLength) {
      const auto offset = readPointer(start);
      if (!offset) {
        return {};
      }
      end = end != 0 ? end : position_;
      start = position_ = *offset;
      continue;
    }
    ++position_;
    if (length == 0) {
      position_ = end != 0 ? end : position_;
      return text.finish();
    }
    readLabel(length, end != 0, text);
  }
  fail(DecodeError::invalidLabelSize);
  return {};
}

std::size_t Reader::readDataEnd() {
  const std::size_t size = readUInt16();
  return position_ + size;
}

void Reader::expectDataEnd(std::size_t end) {
  if (position_ != end) {
    fail(DecodeError::invalidDataSize);
  }
}

}  // namespace DnsToolsSocket
