#pragma once

#include <cstdint>
#include <string>

namespace quilletctl {

/// Numbers for a person to read.

/// "0.4", "12.3", "1234"; at most six characters.
std::string millisecondsText(double milliseconds);
/// "12 s", "5 min 3 s", "4 h 5 min", "3 days 4 h"
std::string durationText(double seconds);
/// "812 octets", "12.3 KiB"
std::string sizeText(double octets);
/// "12.3 %"; "-" of nothing
std::string shareText(std::uint64_t part, std::uint64_t whole);

}  // namespace quilletctl
