#include "dns_tools/Writer.h"

#include <limits>
#include <string>

#include "dns_tools/NameSuffix.h"

namespace DnsToolsSocket {

namespace {

constexpr std::uint16_t kPointerMark = 0xC000;
constexpr std::size_t kMaxLabelSize = 255;
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

void Writer::writeBytes(platform::DataView bytes) {
  onto_.insert(onto_.end(), bytes.begin(), bytes.end());
}

void Writer::writeName(std::string_view name) {
  NameSuffix rest(name);
  if (writePointer(name, rest.hash())) {
    return;
  }
  if (rest.hasEmptyLabel()) {
    rest = NameSuffix(labels_.keep(withoutEmptyPieces(name)));
  }
  while (!rest.empty()) {
    writeLabel(rest.takeLabel());
    if (!rest.empty() && writePointer(rest.text(), rest.hash())) {
      return;
    }
  }
  writeIntegers(std::uint8_t{0});
}

/// Writes a pointer to the text, if it was written before; otherwise it will have been, from here.
bool Writer::writePointer(std::string_view text, std::uint64_t hash) {
  const auto offset = labels_.findOrStore(text, hash, onto_.size());
  if (offset) {
    writeIntegers(static_cast<std::uint16_t>(kPointerMark | *offset));
  }
  return offset.has_value();
}

void Writer::writeLabel(std::string_view label) {
  if (label.size() > kMaxLabelSize) {
    fail(EncodeError::labelTooLong);
    return;
  }
  writeIntegers(static_cast<std::uint8_t>(label.size()));
  writeBytes(platform::bytesOf(label));
}

std::size_t Writer::beginData() {
  writeIntegers(std::uint16_t{0});
  return onto_.size();
}

void Writer::endData(std::size_t begin) {
  const std::size_t size = onto_.size() - begin;
  if (size > kMaxDataSize) {
    fail(EncodeError::dataTooLong);
    return;
  }
  onto_[begin - 2] = static_cast<std::uint8_t>(size >> 8);
  onto_[begin - 1] = static_cast<std::uint8_t>(size);
}

}  // namespace DnsToolsSocket
