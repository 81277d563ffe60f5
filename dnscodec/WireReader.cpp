#include "dnscodec/WireReader.h"

#include <algorithm>
#include <optional>

namespace quillet {

namespace {

constexpr std::uint8_t kPointerBits = 0xC0;

bool isAscii(platform::DataView bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte < 0x80; });
}

}  // namespace

std::string WireReader::readName() {
  std::string name;
  std::size_t position = offset_;
  std::optional<std::size_t> lengthAtPointer;  // of the name, where the last pointer was followed
  int pointers = 0;
  bool complete = false;
  while (!complete && position < buffer_.size()) {
    const std::uint8_t byte = buffer_[position++];
    if (byte < kPointerBits) {
      complete = byte == 0;
      if (!complete && !readLabel(position, byte, name)) {
        break;
      }
      continue;
    }
    if (position == buffer_.size()) {
      break;
    }
    const std::size_t target = (byte & ~kPointerBits) << 8 | buffer_[position++];
    if (!lengthAtPointer) {
      offset_ = position;
    }
    if (++pointers > kMaxPointers || !budget_.charge(DecodeBudget::kPointerCost)) {
      failed_ = true;
      return {};
    }
    lengthAtPointer = name.size();
    position = target;
  }
  if (!lengthAtPointer) {
    offset_ = position;
    failed_ = failed_ || !complete;
  } else if (!complete && !failed_) {
    name.resize(*lengthAtPointer);
  }
  return name.empty() ? "." : name;
}

bool WireReader::readLabel(std::size_t& position, std::size_t length, std::string& name) {
  if (buffer_.size() - position < length) {
    return false;
  }
  const auto label = buffer_.subspan(position, length);
  if (!isAscii(label)) {
    return false;
  }
  if (!budget_.charge(length + 1)) {
    failed_ = true;
    return false;
  }
  if (!name.empty()) {
    name.push_back('.');
  }
  name.append(platform::textOf(label));
  position += length;
  return true;
}

}  // namespace quillet
