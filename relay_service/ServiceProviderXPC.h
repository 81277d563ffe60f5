#pragma once

#include <utility>

#include "platform/base/NSObject.h"
#include "relay_service/RelaySettings.h"
#include "relay_service/ServiceProviderXPCProtocol.h"
#include "relay_service/XPCServiceDNSProxyProtocol.h"

namespace QuilletXPCservice {

/// The object that serves one client's connection. Its methods write to the log but for the
/// public-IP lookup.
class ServiceProviderXPC final : public platform::NSObject,
                                 public ServiceProviderXPCProtocol,
                                 public XPCServiceDNSProxyProtocol {
 public:
  explicit ServiceProviderXPC(PublicIpLookup lookup) : lookup_(std::move(lookup)) {}

  void getPublicIp(const platform::NSXPCReply& reply) override;
  void sendDNSProxyCommand(const std::string& command) override;
  void printAppLogToFile(const std::string& log) override;

  void printLogToFile(const std::string& log) override;
  void proxyStateWasUpdated(const std::string& state) override;
  /// The block is neither kept nor called.
  void setAgentCommandListener(std::function<void(std::string)> listener) override;

 private:
  const PublicIpLookup lookup_;
};

}  // namespace QuilletXPCservice
