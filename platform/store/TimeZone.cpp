#include "platform/store/TimeZone.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "platform/base/Clock.h"
#include "platform/store/RegularFile.h"

namespace platform {

namespace {

constexpr std::uint64_t kNanosecondsBetweenLooks = 1'000'000'000;
// The longest identifiers have about 30 characters.
constexpr std::size_t kMaxIdentifierLength = 64;
constexpr std::size_t kMaxTimezoneFileSize = 4096;

bool isIdentifierCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '/' ||
         c == '_' || c == '-' || c == '+';
}

// `text` when it can be an identifier, else nothing; a zone given as rules (`CET-1CEST,M3.5.0`) is
// none.
std::string identifierIn(std::string_view text) {
  const bool isIdentifier = text.size() <= kMaxIdentifierLength && !text.starts_with('/') &&
                            std::all_of(text.begin(), text.end(), isIdentifierCharacter);
  return std::string(isIdentifier ? text : std::string_view());
}

// The identifier of a file of the time zone database.
std::string identifierOfFile(std::string_view path) {
  constexpr std::string_view kDatabase = "zoneinfo/";
  const std::size_t found = path.rfind(kDatabase);
  return found == std::string_view::npos ? std::string()
                                         : identifierIn(path.substr(found + kDatabase.size()));
}

std::string identifierFromEnvironment() {
  const char* const variable = std::getenv("TZ");
  if (variable == nullptr) {
    return {};
  }
  std::string_view value = variable;
  if (value.starts_with(':')) {
    value.remove_prefix(1);
  }
  if (value.empty()) {
    return "UTC";
  }
  return value.starts_with('/') ? identifierOfFile(value) : identifierIn(value);
}

std::string identifierFromLink(const std::filesystem::path& localtime) {
  std::error_code error;
  return identifierOfFile(std::filesystem::read_symlink(localtime, error).native());
}

std::string identifierFromFile(const std::filesystem::path& timezone) {
  const auto content = readRegularFile(timezone, kMaxTimezoneFileSize);
  if (!content) {
    return {};
  }
  const std::string_view text = content->text;
  return identifierIn(text.substr(0, text.find_first_of(" \t\r\n")));
}

std::string lookUp(const TimeZonePaths& paths) {
  std::string found = identifierFromEnvironment();
  if (found.empty()) {
    found = identifierFromLink(paths.localtime);
  }
  if (found.empty()) {
    found = identifierFromFile(paths.timezone);
  }
  return found.empty() ? "UTC" : found;
}

}  // namespace

const std::string& SystemTimeZone::identifier() {
  const std::uint64_t now = Clock::shared().uptimeNanoseconds();
  if (identifier_.empty() || now - lookedUpAt_ >= kNanosecondsBetweenLooks) {
    identifier_ = lookUp(paths_);
    lookedUpAt_ = now;
  }
  return identifier_;
}

const std::string& currentTimeZoneIdentifier() {
  static SystemTimeZone zone;
  return zone.identifier();
}

}  // namespace platform
