#pragma once

#include <string>
#include <tl/expected.hpp>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/Error.h"

namespace quillet {

/// One server of a policy and the domains that it answers for.
struct WhitelistedDNS {
  /// Domain fragments.
  std::vector<std::string> assignedDomains;
  /// An address, optionally a colon and a port.
  std::string dnsServerIP;
};

/// The policy server's answer.
struct WhitelistedDomains {
  /// Reads the one JSON object that a datagram holds. Every member is required and of its own type,
  /// others are ignored. The error says what is wrong in the words of the platform, or names a
  /// member that goes beyond the bounds of `parseJSON`.
  static tl::expected<WhitelistedDomains, platform::Error> decode(platform::DataView bytes);

  /// Whether the list below replaces the domains in use.
  bool status = false;
  std::vector<WhitelistedDNS> dnsServerSettings;
};

}  // namespace quillet
