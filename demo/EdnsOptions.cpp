#include "demo/EdnsOptions.h"

namespace quillet {

namespace {

constexpr std::size_t kOptionHeaderSize = 4;  // OPTION-CODE, OPTION-LENGTH

std::uint16_t readUInt16(platform::DataView bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

}  // namespace

std::optional<std::vector<EdnsOption>> readEdnsOptions(platform::DataView rdata) {
  std::vector<EdnsOption> options;
  while (!rdata.empty()) {
    if (rdata.size() < kOptionHeaderSize) {
      return std::nullopt;
    }
    const std::uint16_t code = readUInt16(rdata);
    const std::size_t length = readUInt16(rdata.subspan(2));
    rdata = rdata.subspan(kOptionHeaderSize);
    if (rdata.size() < length) {
      return std::nullopt;
    }
    options.push_back({code, rdata.first(length)});
    rdata = rdata.subspan(length);
  }
  return options;
}

}  // namespace quillet
