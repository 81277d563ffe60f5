#include "dnscodec/OptionBlock.h"

#include "platform/foundation/NSLog.h"

namespace quillet {

bool OptionBlock::add(std::uint16_t code, std::string_view value) {
  constexpr std::size_t kMaxSize = 0xFFFF;  // of a value, and of a record's data
  const bool isFull = writer_.size() > 0 && writer_.size() + kHeadSize + value.size() > kMaxSize;
  if (value.size() > kMaxSize || isFull) {
    platform::NSLog("inject value: ", code, " left out, too long: ", value.size(), " bytes");
    return false;
  }
  writer_.writeUInt16(code);
  writer_.writeUInt16(static_cast<std::uint16_t>(value.size()));
  writer_.writeBytes(platform::bytesOf(value));
  return true;
}

}  // namespace quillet
