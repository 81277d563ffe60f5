#pragma once

#include "DnsProxyExt/relay/DNSProxyToContentFilter.h"
#include "DnsProxyExt/relay/XpcUdpCommandParser.h"

namespace quillet {

/// A provider that obeys commands.
class AppToExtDelegate : public DNSProxyToContentFilter {
 public:
  /// Takes a command that arrived on the link.
  virtual void receivedCommandFromApp(const XpcUdpCommand& msg) = 0;
};

}  // namespace quillet
