#include "dns_tools/Reader.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/base/Utf8.h"

namespace DnsToolsSocket {

using platform::DataView;

namespace {

constexpr std::uint8_t kLargestLabelLength = 0xBF;
constexpr unsigned kPointerOffsetMask = 0x3FFF;

// A name beyond RFC 1035 section 2.3.4 gives back the memory that it does not need: only such
// names can be many times the size of their message.
constexpr std::size_t kUsualNameSize = 255;

bool isValidText(DataView labels) {
  if (platform::isAscii(platform::textOf(labels))) {
    return true;
  }
  while (!labels.empty() &&
         platform::isValidUtf8(platform::textOf(labels.subspan(1, labels.front())))) {
    labels = labels.subspan(std::size_t{1} + labels.front());
  }
  return labels.empty();
}

/// Labels, each after its length, are their text shifted by one, once dots stand in place of the
/// lengths. The octet after them is there.
void appendText(std::string& name, DataView labels) {
  const std::size_t begin = name.size();
  name.append(platform::textOf(labels).data() + 1, labels.size());
  for (std::size_t next = 0; next < labels.size();) {
    next += std::size_t{1} + labels[next];
    name[begin + next - 1] = '.';
  }
}

/// The same for labels that were pointed to: of them only the non-empty pieces between dots count.
void appendPieces(std::string& name, DataView labels) {
  appendText(name, labels);
  if (platform::textOf(labels).find('.') != std::string_view::npos) {
    const auto begin = name.end() - std::ssize(labels);
    char previous = '.';
    name.erase(std::remove_if(
                   begin, name.end(),
                   [&previous](char c) { return std::exchange(previous, c) == '.' && c == '.'; }),
               name.end());
  }
}

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

/// The labels from the cursor on, up to a length that is none or has too few octets after it.
inline DataView Reader::readLabels() {
  std::size_t end = position_;
  while (end < message_.size()) {
    const std::size_t length = message_[end];
    if (length == 0 || length > kLargestLabelLength || length >= message_.size() - end) {
      break;
    }
    end += 1 + length;
  }
  const auto labels = message_.subspan(position_, end - position_);
  position_ = end;
  if (!isValidText(labels)) {
    fail(DecodeError::unicodeDecodingError);
  }
  spend(labels.size());
  return labels;
}

std::string Reader::readName() {
  std::string name;
  std::size_t start = position_;  // of the name, or of the part of it that a pointer led to
  std::size_t end = 0;            // after the first pointer; 0 before there is one
  for (;;) {
    const auto labels = readLabels();
    const std::size_t next = remaining() > 0 ? message_[position_] : 1;
    if (next > 0 && next <= kLargestLabelLength) {
      fail(DecodeError::invalidLabelSize);
      break;
    }
    (end == 0 ? appendText : appendPieces)(name, labels);
    if (next == 0) {
      position_ = end != 0 ? end : position_ + 1;
      if (name.empty()) {
        name = '.';
      } else if (name.size() > kUsualNameSize) {
        name.shrink_to_fit();
      }
      return name;
    }
    const auto offset = readPointer(start);
    if (!offset) {
      break;
    }
    end = end != 0 ? end : position_;
    start = position_ = *offset;
  }
  name.clear();
  return name;
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
