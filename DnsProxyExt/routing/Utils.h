#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace quillet {

/// Holds `DNSHost`.
class Utils {
 public:
  /// The address of a server, shared by reference: one object may stand under many keys of a domain
  /// map. Printed in the form that it is read from, `10.0.0.1:53`.
  class DNSHost {
   public:
    /// Reads `address` or `address:port`; what follows a second colon is ignored. A port that is
    /// missing or no decimal number is 53. Never fails: neither address nor port range is checked
    /// here, a connection refuses what it cannot use.
    explicit DNSHost(std::string_view text);

    /// The one at an address and a port written as texts.
    static std::shared_ptr<const DNSHost> at(std::string_view address, std::string_view port);

    void describe(std::string& out) const;
    [[nodiscard]] std::string description() const;
    [[nodiscard]] std::string debugDescription() const { return description(); }

    std::int64_t port;
    std::string address;
  };
};

/// A server as settings and domain maps hold it.
using DNSHostRef = std::shared_ptr<const Utils::DNSHost>;

}  // namespace quillet
