#include "platform/networkextension/NWHostEndpoint.h"

namespace platform {

void NWHostEndpoint::describe(std::string& out) const {
  const bool needsBrackets = hostname.find(':') != std::string::npos;
  out.append(needsBrackets ? "[" : "").append(hostname).append(needsBrackets ? "]:" : ":");
  out.append(port);
}

}  // namespace platform
