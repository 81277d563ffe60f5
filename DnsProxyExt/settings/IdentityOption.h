#pragma once

#include <string_view>

namespace quillet {

/// An EDNS option that carries a part of the identity. Codes are in decimal, as the values for
/// injection name them; all lie in the range for local and experimental use (RFC 6891 section 9).
struct IdentityOption {
  static constexpr char kOrganization[] = "65001";
  static constexpr char kOrgUnit[] = "65002";
  static constexpr char kUser[] = "65003";
  static constexpr char kAddress[] = "65004";
  static constexpr char kApplication[] = "65005";
  static constexpr char kTimeZone[] = "65006";
  /// Always "1".
  static constexpr char kMarker[] = "65007";
  static constexpr char kTtl[] = "65010";
  static constexpr char kSerialNumber[] = "65011";
  /// Milliseconds since 1970.
  static constexpr char kTimestamp[] = "65015";

  std::string_view code;
  /// As the documentation calls it.
  std::string_view holds;
};

/// All of them, in the order of the documentation.
inline constexpr IdentityOption kIdentityOptions[] = {
    {IdentityOption::kOrganization, "organisation"},
    {IdentityOption::kOrgUnit, "organisational unit"},
    {IdentityOption::kUser, "user"},
    {IdentityOption::kAddress, "address"},
    {IdentityOption::kApplication, "application"},
    {IdentityOption::kTimeZone, "time zone"},
    {IdentityOption::kMarker, "`1`"},
    {IdentityOption::kTtl, "TTL"},
    {IdentityOption::kSerialNumber, "serial number"},
    {IdentityOption::kTimestamp, "milliseconds since 1970"},
};

/// An option whose value is a setting's text, with user authentication.
struct ConfiguredIdentity {
  std::string_view key;
  const char* code;
  /// Whether an empty text takes the option away; else it is sent empty.
  bool isRemovedByEmpty;
};

inline constexpr ConfiguredIdentity kConfiguredIdentity[] = {
    {"organizationId", IdentityOption::kOrganization, false},
    {"orgUnitId", IdentityOption::kOrgUnit, true},
    {"userEmail", IdentityOption::kUser, true},
    {"userId", IdentityOption::kUser, true},
    {"ttl", IdentityOption::kTtl, false},
    {"serialNumber", IdentityOption::kSerialNumber, false},
};

}  // namespace quillet
