#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/udp/SocketAddress.h"

namespace quillet {

/// Whether the proxy itself serves at an address.
using IsOwnAddress = std::function<bool(const platform::SocketAddress&)>;

/// What is wrong with the text of a setting, a phrase each.
using SettingFaults = std::vector<std::string>;

// One for each form that a setting has. They judge by what the provider's parsers make of the text.

/// A server is an IPv4 address, with a port from 1 to 65535 or without one.
SettingFaults faultsOfServer(std::string_view text, const IsOwnAddress& isOwn);
/// A fragment needs a server and has no blank around it, and brackets stand around the list: its
/// first and last character are lost, whatever they are.
SettingFaults faultsOfMappedDomains(std::string_view text, const IsOwnAddress& isOwn);
/// "true" or "false", to the letter.
SettingFaults faultsOfSwitch(std::string_view text, const IsOwnAddress& isOwn);
/// Each is an IP address without a port.
SettingFaults faultsOfAddresses(std::string_view text, const IsOwnAddress& isOwn);
/// An entry has no blank around it: it would have to be met too.
SettingFaults faultsOfApplications(std::string_view text, const IsOwnAddress& isOwn);
/// A JSON object whose list of applications, where it has one, is an array; or no text.
SettingFaults faultsOfJsonVars(std::string_view text, const IsOwnAddress& isOwn);

}  // namespace quillet
