#include "relay_service/ServiceDelegate.h"

#include <memory>

#include "platform/log/NSLog.h"
#include "relay_service/ServiceProviderXPC.h"

namespace QuilletXPCservice {

bool ServiceDelegate::listener(platform::NSXPCListener& /*listener*/,
                               platform::NSXPCConnection& shouldAcceptNewConnection) {
  platform::NSLog("attempt to do new connection");
  shouldAcceptNewConnection.exportedInterface = ServiceProviderXPCProtocol::interface();
  shouldAcceptNewConnection.exportedObject = std::make_shared<ServiceProviderXPC>(lookup_);
  shouldAcceptNewConnection.resume();
  return true;
}

}  // namespace QuilletXPCservice
