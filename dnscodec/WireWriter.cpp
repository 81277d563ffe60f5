#include "dnscodec/WireWriter.h"

#include <algorithm>

namespace quillet {

namespace {

constexpr std::size_t kMaxLabelLength = 191;

}  // namespace

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

}  // namespace quillet
