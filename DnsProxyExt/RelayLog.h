#pragma once

#include <string>

#include "DnsProxyExt/DnsProxyExt.h"
#include "platform/log/NSLog.h"

namespace quillet {

/// One line for the relay service's log alone. Not put together while there is no link.
template <class... Pieces>
void DnsProxyExt::logAtRelay(const Pieces&... pieces) const {
  if (xpcUdpHelper->connection) {
    std::string line;
    (platform::describe(line, pieces), ...);
    printToUdpLogs(line);
  }
}

/// One line for the log and then for the relay service's.
template <class... Pieces>
void DnsProxyExt::logTwice(const Pieces&... pieces) const {
  std::string line;
  (platform::describe(line, pieces), ...);
  platform::NSLog(line);
  printToUdpLogs(line);
}

}  // namespace quillet
