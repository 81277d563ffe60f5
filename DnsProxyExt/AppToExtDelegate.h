#pragma once

#include "DnsProxyExt/DNSProxyToContentFilter.h"
#include "DnsProxyExt/XpcUdpCommandParser.h"

namespace quillet {

/// A provider that obeys commands.
class AppToExtDelegate : public DNSProxyToContentFilter {
 public:
  /// Takes a command that arrived on the link.
  virtual void receivedCommandFromApp(const XpcUdpCommand& msg) = 0;
};

}  // namespace quillet
