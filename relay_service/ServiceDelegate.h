#pragma once

#include <utility>

#include "platform/base/NSObject.h"
#include "platform/xpc/NSXPCListener.h"
#include "relay_service/RelaySettings.h"

namespace QuilletXPCservice {

/// Accepts every client: who may reach the service is settled by its socket's folder.
class ServiceDelegate final : public platform::NSObject, public platform::NSXPCListenerDelegate {
 public:
  explicit ServiceDelegate(PublicIpLookup lookup) : lookup_(std::move(lookup)) {}

  bool listener(platform::NSXPCListener& listener,
                platform::NSXPCConnection& shouldAcceptNewConnection) override;

 private:
  const PublicIpLookup lookup_;
};

}  // namespace QuilletXPCservice
