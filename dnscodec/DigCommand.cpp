#include "dnscodec/DigCommand.h"

#include <DeploymentValues.h>

#include "dnscodec/HexText.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/Description.h"

namespace quillet {

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
