#include "platform/networkextension/NEProviderStopReason.h"

#include "platform/base/Description.h"

namespace platform {

void NEProviderStopReason::describe(std::string& out) const {
  out.append("NEProviderStopReason(rawValue: ");
  platform::describe(out, rawValue_);
  out.push_back(')');
}

}  // namespace platform
