#include "platform/networkextension/NEDNSSettings.h"

#include "platform/base/Description.h"

namespace platform {

void NEDNSSettings::describe(std::string& out) const {
  out.append("NEDNSSettings(servers: ");
  platform::describe(out, servers);
  out.push_back(')');
}

}  // namespace platform
