#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "dns_tools/Message.h"
#include "platform/base/Data.h"
#include "programs/quillet_demo_filter/DatagramSocket.h"

namespace quillet {

/// A socket and what it serves.
struct DemoSocket {
  /// Queries; requests for the policy, each of which maps a domain to the last IPv4 socket of
  /// queries; the registrations of a captive portal, which are queries and answered as such.
  enum class Service { queries, policy, portal };

  DatagramSocket socket;
  Service service = Service::queries;
};

/// The demo filtering service: answers what reaches its sockets and counts it.
class DemoFilter {
 public:
  struct Totals {
    std::uint64_t queries = 0;   ///< datagrams received, but for requests for the policy
    std::uint64_t answered = 0;  ///< answered with what was asked
    std::uint64_t refused = 0;   ///< answered with an error code
  };

  /// `isQuiet`: no line for each query.
  DemoFilter(std::vector<DemoSocket> sockets, bool isQuiet);

  /// Serves until `stopDescriptor` is readable.
  void run(int stopDescriptor);

  [[nodiscard]] const Totals& totals() const { return totals_; }

 private:
  void serveBatch(DemoSocket& served);
  std::optional<platform::Data> serve(const DemoSocket& served, platform::DataView datagram);
  std::optional<platform::Data> answerRequest(platform::DataView datagram);
  std::optional<platform::Data> answerQuery(platform::DataView datagram, const char* label);
  std::optional<DnsToolsSocket::Message> answerFor(platform::DataView datagram, const char* label);
  void printLines();

  std::vector<DemoSocket> sockets_;
  std::string policy_;
  const bool isQuiet_;
  Totals totals_;
  std::string lines_;  // of the batch at hand
};

}  // namespace quillet
