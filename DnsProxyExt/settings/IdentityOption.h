#pragma once

namespace quillet {

/// The EDNS option codes that carry the identity, written in decimal as the values for injection
/// name them. All lie in the range for local and experimental use (RFC 6891 section 9).
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
};

}  // namespace quillet
