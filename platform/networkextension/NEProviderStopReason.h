#pragma once

#include <string>

namespace platform {

/// Why a provider is stopped. Printed as the framework prints it: `NEProviderStopReason(rawValue:
/// 1)`.
class NEProviderStopReason {
 public:
  static const NEProviderStopReason kNone;
  static const NEProviderStopReason kUserInitiated;
  static const NEProviderStopReason kProviderFailed;

  [[nodiscard]] int rawValue() const { return rawValue_; }
  void describe(std::string& out) const;

 private:
  explicit constexpr NEProviderStopReason(int rawValue) : rawValue_(rawValue) {}

  int rawValue_;
};

inline constexpr NEProviderStopReason NEProviderStopReason::kNone{0};
inline constexpr NEProviderStopReason NEProviderStopReason::kUserInitiated{1};
inline constexpr NEProviderStopReason NEProviderStopReason::kProviderFailed{2};

}  // namespace platform
