#pragma once

#include <cstddef>
#include <cstdint>

#include "control_client/QueryEvent.h"
#include "control_client/StyledLine.h"

namespace quilletctl {

/// The lines of `watch`, in columns of at most `width` together: milliseconds, response code, rule,
/// server, type and name; the application at the right end.
StyledLine watchHeading(std::size_t width);
StyledLine watchLine(const QueryEvent& query, std::size_t width);
/// Tells of queries that no line tells of.
StyledLine watchLost(std::uint64_t count, std::size_t width);

}  // namespace quilletctl
