#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "DnsProxyExt/relay/XpcUdpHelper.h"
#include "platform/base/Description.h"
#include "platform/log/NSLog.h"

namespace quillet {

/// Hands lines to the relay service's log. Inside the event loop only.
class RelayLog {
 public:
  explicit RelayLog(std::shared_ptr<XpcUdpHelper> link) : link_(std::move(link)) {}

  void print(std::string_view line) const { link_->printLogToFile(line); }

  /// One line for the relay service's log alone. Not put together while there is no link.
  template <class... Pieces>
  void alone(const Pieces&... pieces) const {
    if (link_->connection) {
      print(joined(pieces...));
    }
  }

  /// One line for the log and then for the relay service's.
  template <class... Pieces>
  void twice(const Pieces&... pieces) const {
    const auto line = joined(pieces...);
    platform::NSLog(line);
    print(line);
  }

  /// The same about a step (see `NSLogStep`).
  template <class... Pieces>
  void stepTwice(const Pieces&... pieces) const {
    if (platform::logsSteps()) {
      twice(pieces...);
    }
  }

 private:
  /// The identity of a query has some 240 octets.
  static constexpr std::size_t kUsualLine = 300;

  template <class... Pieces>
  static std::string joined(const Pieces&... pieces) {
    std::string line;
    line.reserve(kUsualLine);
    (platform::describe(line, pieces), ...);
    return line;
  }

  std::shared_ptr<XpcUdpHelper> link_;
};

}  // namespace quillet
