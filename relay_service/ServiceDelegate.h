#pragma once

#include "platform/base/NSObject.h"
#include "platform/xpc/NSXPCListener.h"

namespace QuilletXPCservice {

/// Accepts every client: who may reach the service is settled by its socket's folder.
class ServiceDelegate final : public platform::NSObject, public platform::NSXPCListenerDelegate {
 public:
  bool listener(platform::NSXPCListener& listener,
                platform::NSXPCConnection& shouldAcceptNewConnection) override;
};

}  // namespace QuilletXPCservice
