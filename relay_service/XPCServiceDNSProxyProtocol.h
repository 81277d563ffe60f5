#pragma once

#include <functional>
#include <string>

namespace QuilletXPCservice {

/// What a provider would call; exported to nobody.
class XPCServiceDNSProxyProtocol {
 public:
  XPCServiceDNSProxyProtocol() = default;
  XPCServiceDNSProxyProtocol(const XPCServiceDNSProxyProtocol&) = delete;
  XPCServiceDNSProxyProtocol& operator=(const XPCServiceDNSProxyProtocol&) = delete;
  virtual ~XPCServiceDNSProxyProtocol() = default;

  virtual void printLogToFile(const std::string& log) = 0;
  virtual void proxyStateWasUpdated(const std::string& state) = 0;
  virtual void setAgentCommandListener(std::function<void(std::string)> listener) = 0;
};

}  // namespace QuilletXPCservice
