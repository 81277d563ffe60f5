#pragma once

#include <functional>
#include <string>

namespace quillet {

/// The calls of the relay service that are meant for a provider. The service exports them to
/// nobody, so no provider calls them.
class XPCServiceDNSProxyProtocol {
 public:
  XPCServiceDNSProxyProtocol() = default;
  XPCServiceDNSProxyProtocol(const XPCServiceDNSProxyProtocol&) = delete;
  XPCServiceDNSProxyProtocol& operator=(const XPCServiceDNSProxyProtocol&) = delete;
  virtual ~XPCServiceDNSProxyProtocol() = default;

  /// Takes one log line.
  virtual void printLogToFile(const std::string& log) = 0;
  /// Takes the provider's state.
  virtual void proxyStateWasUpdated(const std::string& state) = 0;
  /// Takes who is to hear commands, one text each.
  virtual void setAgentCommandListener(std::function<void(std::string)> listener) = 0;
};

}  // namespace quillet
