#include "dnscodec/OptionBlock.h"

#include <DeploymentValues.h>

#include "platform/base/Data.h"
#include "platform/base/Description.h"
#include "platform/log/NSLog.h"

namespace quillet {

namespace {

// Reckoned, not looked up: so the compiler makes sixteen digits at a time.
char hexDigit(int nibble) { return static_cast<char>(nibble + (nibble > 9 ? 'a' - 10 : '0')); }

}  // namespace

void appendHex(std::string& out, platform::DataView bytes) {
  const auto start = out.size();
  out.resize(start + 2 * bytes.size());
  char* const digits = out.data() + start;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    digits[2 * i] = hexDigit(bytes[i] >> 4);
    digits[2 * i + 1] = hexDigit(bytes[i] & 0xF);
  }
}

bool OptionBlock::fits(std::size_t size, std::string_view value) {
  constexpr std::size_t kMaxSize = 0xFFFF;  // of a value, and of a record's data
  const bool isFull = size > 0 && size + kHeadSize + value.size() > kMaxSize;
  return value.size() <= kMaxSize && !isFull;
}

bool OptionBlock::add(std::uint16_t code, std::string_view value) {
  if (!fits(writer_.size(), value)) {
    platform::NSLog("inject value: ", code, " left out, too long: ", value.size(), " bytes");
    return false;
  }
  writer_.writeUInt32(std::uint32_t{code} << 16 | static_cast<std::uint32_t>(value.size()));
  writer_.writeBytes(platform::bytesOf(value));
  return true;
}

namespace {

// Not counting the value; "+ednsopt=65001: " is what one option takes at most.
constexpr std::size_t kBeginSize = 64;
constexpr std::size_t kOptionSize = 16;

}  // namespace

DigCommand::DigCommand(std::size_t optionCount, std::size_t valueSize) {
  text_.reserve(kBeginSize + kOptionSize * optionCount + 2 * valueSize);
  text_.append("dig @");
  text_.append(deployment::kFilteringDns);
  text_.append(" -p 81 +edns=0 +bufsize=4096 ");
}

void DigCommand::addOption(std::uint16_t code, std::string_view value) {
  text_.append("+ednsopt=");
  platform::describe(text_, code);
  text_.push_back(':');
  appendHex(text_, platform::bytesOf(value));
  text_.push_back(' ');
}

}  // namespace quillet
