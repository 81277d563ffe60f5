#pragma once

#include <optional>
#include <string_view>

#include "DnsProxyExt/registry/ReportSettings.h"

namespace quillet {

/// The report that a query name asks for: one that holds "quillet_osx_filter", in small letters.
std::optional<ReportSettings> reportCommand(std::string_view questionName);

/// Reads its parameters, what follows the marker: `p_TEXT`, `tf_SECONDS` and `d`. One with nothing
/// after it stays at its default.
ReportSettings reportParameters(std::string_view text);

}  // namespace quillet
