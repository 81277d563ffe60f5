#include "dnscodec/OptionBlock.h"

#include "platform/foundation/NSLog.h"

namespace quillet {

bool OptionBlock::add(std::uint16_t code, std::string_view value) {
  constexpr std::size_t kMaxLength = 0xFFFF;
  if (value.size() > kMaxLength) {
    platform::NSLog("inject value: ", code, " left out, too long: ", value.size(), " bytes");
    return false;
  }
  writer_.writeUInt16(code);
  writer_.writeUInt16(static_cast<std::uint16_t>(value.size()));
  writer_.writeBytes(platform::bytesOf(value));
  return true;
}

}  // namespace quillet
