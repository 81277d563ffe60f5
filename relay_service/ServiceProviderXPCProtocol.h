#pragma once

#include <string>

#include "platform/xpc/NSXPCInterface.h"

namespace QuilletXPCservice {

/// What the desktop application may call.
class ServiceProviderXPCProtocol {
 public:
  ServiceProviderXPCProtocol() = default;
  ServiceProviderXPCProtocol(const ServiceProviderXPCProtocol&) = delete;
  ServiceProviderXPCProtocol& operator=(const ServiceProviderXPCProtocol&) = delete;
  virtual ~ServiceProviderXPCProtocol() = default;

  /// Replies with the address by which the public network sees this machine; empty when the lookup
  /// gave none. Blocks until then.
  virtual void getPublicIp(const platform::NSXPCReply& reply) = 0;
  virtual void sendDNSProxyCommand(const std::string& command) = 0;
  virtual void printAppLogToFile(const std::string& log) = 0;

  /// The methods above under their wire names.
  static platform::NSXPCInterface interface() {
    platform::NSXPCInterface methods;
    methods.add("getPublicIpWithReply:", &ServiceProviderXPCProtocol::getPublicIp)
        .add("sendDNSProxyCommandWithCommand:", &ServiceProviderXPCProtocol::sendDNSProxyCommand)
        .add("printAppLogToFileWithLog:", &ServiceProviderXPCProtocol::printAppLogToFile);
    return methods;
  }
};

}  // namespace QuilletXPCservice
