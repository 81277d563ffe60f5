#include "control_client/Quantities.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace quilletctl {

namespace {

std::string fixed(double number, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", digits, number);
  return text;
}

std::string whole(double number, const char* unit) { return fixed(std::floor(number), 0) + unit; }

}  // namespace

std::string millisecondsText(double milliseconds) {
  constexpr double kLargest = 999999;
  constexpr double kWithDigit = 999.95;
  const double shown = std::min(milliseconds, kLargest);
  return fixed(shown, shown < kWithDigit ? 1 : 0);
}

std::string durationText(double seconds) {
  constexpr double kMinute = 60;
  constexpr double kHour = 60 * kMinute;
  constexpr double kDay = 24 * kHour;
  constexpr double kLongest = 1e6 * kDay;
  seconds = std::min(seconds, kLongest);
  if (seconds < kMinute) {
    return whole(seconds, " s");
  }
  if (seconds < kHour) {
    return whole(seconds / kMinute, " min ") + whole(std::fmod(seconds, kMinute), " s");
  }
  if (seconds < kDay) {
    return whole(seconds / kHour, " h ") + whole(std::fmod(seconds, kHour) / kMinute, " min");
  }
  const char* const days = seconds < 2 * kDay ? " day " : " days ";
  return whole(seconds / kDay, days) + whole(std::fmod(seconds, kDay) / kHour, " h");
}

std::string sizeText(double octets) {
  constexpr double kStep = 1024;
  if (octets < kStep) {
    return whole(octets, " octets");
  }
  if (octets < kStep * kStep) {
    return fixed(octets / kStep, 1) + " KiB";
  }
  return fixed(std::min(octets / kStep / kStep, 1e9), 1) + " MiB";
}

std::string shareText(std::uint64_t part, std::uint64_t whole) {
  constexpr double kHundred = 100;
  return whole == 0
             ? "-"
             : fixed(kHundred * static_cast<double>(part) / static_cast<double>(whole), 1) + " %";
}

}  // namespace quilletctl
