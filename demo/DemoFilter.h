#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <tl/expected.hpp>
#include <vector>

#include "dns_tools/Message.h"
#include "platform/base/Data.h"
#include "platform/udp/UDPSocket.h"

namespace quillet {

/// The demo filtering service: answers what reaches its sockets and counts it. Inside the event
/// loop only.
class DemoFilter {
 public:
  /// What a socket is for: queries; requests for the policy, each of which maps a domain to the
  /// last IPv4 socket of queries (a policy has no form for an IPv6 server); the registrations of a
  /// captive portal, which are queries and answered as such.
  enum class Service { queries, policy, portal };

  struct Totals {
    std::uint64_t queries = 0;   ///< datagrams received, but for requests for the policy
    std::uint64_t answered = 0;  ///< answered with what was asked
    std::uint64_t refused = 0;   ///< answered with an error code
  };

  /// `isQuiet`: no line for each query.
  explicit DemoFilter(bool isQuiet);
  ~DemoFilter();
  DemoFilter(const DemoFilter&) = delete;
  DemoFilter& operator=(const DemoFilter&) = delete;

  /// Answers from now on what is sent to `address`; gives the address as bound: a port 0 has become
  /// the system's choice.
  tl::expected<platform::SocketAddress, std::error_code> serve(
      const platform::SocketAddress& address, Service service);

  [[nodiscard]] const Totals& totals() const { return totals_; }

 private:
  class Served;

  void serveBatch(platform::UDPSocket& socket, Service service);
  std::optional<platform::Data> answer(Service service, platform::DataView datagram);
  std::optional<platform::Data> answerRequest(platform::DataView datagram);
  std::optional<platform::Data> answerQuery(platform::DataView datagram, const char* label);
  std::optional<DnsToolsSocket::Message> answerFor(platform::DataView datagram, const char* label);
  void printLines();

  const bool isQuiet_;
  std::vector<std::unique_ptr<Served>> served_;
  std::string mappedServer_;  // empty for none
  platform::DatagramSlots slots_;
  Totals totals_;
  std::string lines_;  // of the batch at hand
};

}  // namespace quillet
