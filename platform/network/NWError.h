#pragma once

#include <optional>
#include <string>
#include <system_error>

namespace platform {

/// A failure of a network operation. Printed as the framework prints it:
/// `POSIXErrorCode(rawValue: 111): Connection refused`, or `-65554: NoSuchRecord` for a host that
/// is no address.
class NWError {
 public:
  /// `code` is an errno value.
  static NWError posix(int code) { return NWError(Domain::posix, code); }
  static NWError from(std::error_code error) { return posix(error.value()); }
  /// None where `error` is none.
  static std::optional<NWError> ifAny(std::error_code error) {
    return error ? std::optional(from(error)) : std::nullopt;
  }
  /// The host text is no IP address; names are never looked up.
  static NWError noSuchRecord() { return NWError(Domain::dns, kNoSuchRecord); }
  /// The destination is an address that this process itself serves.
  static NWError ownAddress();

  [[nodiscard]] int code() const { return code_; }
  /// What has failed, without the number: `Connection refused`, whatever the locale.
  [[nodiscard]] std::string text() const;
  void describe(std::string& out) const;

  bool operator==(const NWError&) const = default;

 private:
  enum class Domain { posix, dns };
  static constexpr int kNoSuchRecord = -65554;

  NWError(Domain domain, int code) : domain_(domain), code_(code) {}

  Domain domain_;
  int code_;
};

}  // namespace platform
