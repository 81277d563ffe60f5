#include "dns_tools/Writer.h"

#include <algorithm>
#include <limits>
#include <string>

namespace DnsToolsSocket {

namespace {

constexpr std::uint16_t kPointerMark = 0xC000;
constexpr std::size_t kMaxLabelSize = 255;
// What a message over UDP usually has room for (RFC 1035 section 4.2.1).
constexpr std::size_t kUsualMessageSize = 512;
constexpr std::size_t kMaxDataSize = std::numeric_limits<std::uint16_t>::max();

std::string withoutEmptyPieces(std::string_view name) {
  std::string result;
  bool betweenPieces = false;
  for (const char c : name) {
    if (c == '.') {
      betweenPieces = !result.empty();
      continue;
    }
    if (betweenPieces) {
      result.push_back('.');
      betweenPieces = false;
    }
    result.push_back(c);
  }
  return result;
}

}  // namespace

void Writer::fail(EncodeError error) {
  if (!error_) {
    error_ = error;
  }
}

tl::expected<void, EncodeError> Writer::finish() {
  onto_.resize(size_);
  if (error_) {
    return tl::unexpected(*error_);
  }
  return {};
}

void Writer::makeRoom(std::size_t size) {
  const std::size_t written = size_ - begin_;
  onto_.resize(begin_ + std::max(kUsualMessageSize, 2 * (written + size)));
}

void Writer::writeBytes(platform::DataView bytes) {
  std::copy(bytes.begin(), bytes.end(), extend(bytes.size()));
}

/// False when the text was not written before.
inline bool Writer::writePointer(std::string_view text, NameSuffix& name) {
  const auto* offset = labels_.find(text, name);
  if (offset != nullptr) {
    writeIntegers(static_cast<std::uint16_t>(kPointerMark | *offset));
  }
  return offset != nullptr;
}

inline void Writer::writeLabel(std::string_view label) {
  if (label.size() > kMaxLabelSize) {
    fail(EncodeError::labelTooLong);
    return;
  }
  auto* octets = extend(1 + label.size());
  *octets = static_cast<std::uint8_t>(label.size());
  std::copy(label.begin(), label.end(), octets + 1);
}

void Writer::writeName(std::string_view name) {
  NameSuffix rest(name);
  if (writePointer(name, rest)) {
    return;
  }
  storeName(name, rest);
  while (!rest.empty()) {
    writeLabel(rest.takeLabel());
    if (rest.empty()) {
      break;
    }
    if (writePointer(rest.text(), rest)) {
      return;
    }
    labels_.store(rest.text(), rest, size_);
  }
  writeIntegers(std::uint8_t{0});
}

/// For a name that is written from here on; `rest` becomes what there is to write of it.
void Writer::storeName(std::string_view name, NameSuffix& rest) {
  if (const auto copy = labels_.copyOf(name, size_)) {
    name = *copy;
    rest = NameSuffix(name);
  }
  labels_.store(name, rest, size_);
  if (rest.hasEmptyLabel()) {
    rest = NameSuffix(labels_.keep(withoutEmptyPieces(name)));
  }
}

std::size_t Writer::beginData() {
  writeIntegers(std::uint16_t{0});
  return size_;
}

void Writer::endData(std::size_t begin) {
  const std::size_t size = size_ - begin;
  if (size > kMaxDataSize) {
    fail(EncodeError::dataTooLong);
    return;
  }
  onto_[begin - 2] = static_cast<std::uint8_t>(size >> 8);
  onto_[begin - 1] = static_cast<std::uint8_t>(size);
}

}  // namespace DnsToolsSocket
