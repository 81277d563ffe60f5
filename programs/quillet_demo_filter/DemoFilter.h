#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "dns_tools/Message.h"
#include "platform/foundation/Data.h"
#include "programs/quillet_demo_filter/DatagramSocket.h"

namespace quillet {

/// The demo filtering service: answers what reaches its sockets and counts it.
class DemoFilter {
 public:
  struct Totals {
    std::uint64_t queries = 0;   ///< datagrams received
    std::uint64_t answered = 0;  ///< answered with what was asked
    std::uint64_t refused = 0;   ///< answered with an error code
  };

  /// `isQuiet`: no line for each query.
  DemoFilter(std::vector<DatagramSocket> sockets, bool isQuiet);

  /// Serves until `stopDescriptor` is readable.
  void run(int stopDescriptor);

  [[nodiscard]] const Totals& totals() const { return totals_; }

 private:
  void serveBatch(DatagramSocket& socket);
  std::optional<DnsToolsSocket::Message> answerFor(platform::DataView datagram);
  void printLines();

  std::vector<DatagramSocket> sockets_;
  const bool isQuiet_;
  Totals totals_;
  std::string lines_;  // of the batch at hand
};

}  // namespace quillet
