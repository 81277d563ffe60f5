#pragma once

#include <string>
#include <vector>

#include "DnsProxyExt/settings/SettingFaults.h"
#include "platform/store/JSONDocument.h"

namespace quillet {

/// A fault in a file of settings.
struct SettingsFinding {
  /// As it stands in the file.
  std::string key;
  std::string what;
};

// Both take the object of a file and decide by the tables and parsers that the provider itself
// reads it with. Pure; nothing is logged.

/// Of vendor data: what the provider would pass over, or take for something else.
std::vector<SettingsFinding> checkVendorData(const platform::JSONDocument& document,
                                             const IsOwnAddress& isOwn);

/// Of the group's user defaults. Other programs keep values of their own there, so a key that the
/// provider does not know is a fault only when it is much like one that it does.
std::vector<SettingsFinding> checkGroupDefaults(const platform::JSONDocument& document);

}  // namespace quillet
