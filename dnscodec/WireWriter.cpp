#include "dnscodec/WireWriter.h"

#include <algorithm>

namespace quillet {

namespace {

constexpr std::size_t kMaxLabelLength = 191;

}  // namespace

void WireWriter::writeBytes(platform::DataView bytes) {
  std::copy(bytes.begin(), bytes.end(), room(bytes.size()));
}

void WireWriter::writeName(std::string_view name) {
  if (name != ".") {
    while (true) {
      const auto end = name.find('.');
      const auto label = name.substr(0, std::min(end, kMaxLabelLength));
      writeUInt8(static_cast<std::uint8_t>(label.size()));
      writeBytes(platform::bytesOf(label));
      if (end == std::string_view::npos) {
        break;
      }
      name.remove_prefix(end + 1);
    }
  }
  writeUInt8(0);
}

platform::Data WireWriter::finish() {
  bytes_.resize(std::exchange(used_, 0));
  return std::exchange(bytes_, {});
}

void WireWriter::grow(std::size_t count) {
  bytes_.resize(std::max(used_ + count, bytes_.size() * 2));
}

}  // namespace quillet
