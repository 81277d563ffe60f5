#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quillet {

/// What a flow report is to show; asked for in a query name.
struct ReportSettings {
  /// Only flows registered at most this many seconds ago.
  std::optional<std::int64_t> forLastSecs = std::nullopt;
  /// Only flows whose signing identifier contains this text in any letter case.
  std::optional<std::string> package = std::nullopt;
  /// Adds the platform's details of each flow.
  bool detailed = false;
};

}  // namespace quillet
