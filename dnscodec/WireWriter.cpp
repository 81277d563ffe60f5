#include "dnscodec/WireWriter.h"

#include <algorithm>
#include <string>

namespace quillet {

namespace {

constexpr std::size_t kMaxLabelLength = 191;

std::string withCutLabels(std::string_view name) {
  std::string cut;
  std::size_t length = 0;
  for (const char c : name) {
    length = c == '.' ? 0 : length + 1;
    if (length <= kMaxLabelLength) {
      cut.push_back(c);
    }
  }
  return cut;
}

}  // namespace

void WireWriter::writeName(std::string_view name) {
  if (name == ".") {
    return writeUInt8(0);
  }
  // The text shifted by one, with lengths in place of the dots.
  std::uint8_t* const octets = room(maxNameSize(name));
  std::copy(name.begin(), name.end(), octets + 1);
  octets[name.size() + 1] = 0;
  std::size_t label = 0;
  std::size_t longest = 0;
  for (std::size_t i = 0; i <= name.size(); ++i) {
    if (i == name.size() || name[i] == '.') {
      octets[label] = static_cast<std::uint8_t>(i - label);
      longest = std::max(longest, i - label);
      label = i + 1;
    }
  }
  if (longest > kMaxLabelLength) {
    used_ -= maxNameSize(name);
    writeName(withCutLabels(name));
  }
}

platform::Data WireWriter::finish() {
  bytes_.resize(std::exchange(used_, 0));
  return std::exchange(bytes_, {});
}

void WireWriter::grow(std::size_t count) {
  bytes_.resize(std::max(used_ + count, bytes_.size() * 2));
}

}  // namespace quillet
