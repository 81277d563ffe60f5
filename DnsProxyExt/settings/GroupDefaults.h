#pragma once

#include <string_view>

#include "platform/store/JSONValue.h"

namespace quillet {

/// A value of the group's user defaults that the provider reads.
struct GroupDefault {
  static constexpr char kSendIp[] = "send_ip";
  static constexpr char kIp[] = "ip";
  static constexpr char kSendTimeZone[] = "send_timezone";
  static constexpr char kUserEmail[] = "userEmail";
  /// The vendor data of the last start, which the provider writes too.
  static constexpr char kStoredVendorData[] = "mdmConf";

  std::string_view key;
  /// As the documentation writes it.
  std::string_view form;
  bool (platform::JSONValue::*hasType)() const noexcept;
};

/// All of them.
inline constexpr GroupDefault kGroupDefaults[] = {
    {GroupDefault::kSendIp, "true or false", &platform::JSONValue::is_boolean},
    {GroupDefault::kIp, "text", &platform::JSONValue::is_string},
    {GroupDefault::kSendTimeZone, "number", &platform::JSONValue::is_number},
    {GroupDefault::kUserEmail, "text", &platform::JSONValue::is_string},
    {GroupDefault::kStoredVendorData, "object", &platform::JSONValue::is_object},
};

}  // namespace quillet
