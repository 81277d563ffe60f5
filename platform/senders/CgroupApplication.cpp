#include "platform/senders/CgroupApplication.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace platform {

namespace {

using Application = std::optional<std::string>;
using Pieces = std::optional<std::string_view>;

constexpr char kDigits[] = "0123456789";
constexpr char kHexDigits[] = "0123456789abcdefABCDEF";

/// What is between `prefix` and `suffix`; absent unless `text` has both, with something between.
Pieces between(std::string_view prefix, std::string_view text, std::string_view suffix) {
  const bool fits = text.size() > prefix.size() + suffix.size() && text.starts_with(prefix) &&
                    text.ends_with(suffix);
  return fits ? Pieces(text.substr(prefix.size(), text.size() - prefix.size() - suffix.size()))
              : std::nullopt;
}

/// `text` before the last `separator`, where something is on both sides of it.
Pieces beforeLast(std::string_view text, char separator) {
  const auto at = text.rfind(separator);
  const bool fits = at != std::string_view::npos && at > 0 && at + 1 < text.size();
  return fits ? Pieces(text.substr(0, at)) : std::nullopt;
}

/// The form 8-4-4-4-12 of hexadecimal digits.
bool isUUID(std::string_view text) {
  constexpr std::string_view kShape = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  return std::equal(text.begin(), text.end(), kShape.begin(), kShape.end(), [](char c, char shape) {
    return shape == '-' ? c == '-' : std::string_view(kHexDigits).find(c) != std::string_view::npos;
  });
}

/// `text` before a separator and a UUID at its end.
Pieces beforeUUID(std::string_view text) {
  constexpr std::size_t kUUIDSize = 36;
  if (text.size() < kUUIDSize + 2 || !isUUID(text.substr(text.size() - kUUIDSize))) {
    return std::nullopt;
  }
  const char separator = text[text.size() - kUUIDSize - 1];
  const bool fits = separator == '-' || separator == '.';
  return fits ? Pieces(text.substr(0, text.size() - kUUIDSize - 1)) : std::nullopt;
}

/// Undoes `\xNN` (systemd.unit(5)); what is none, and `\x00`, stays as it is.
std::string unescaped(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    unsigned char octet = 0;
    const auto* const digits = text.data() + 2;
    const bool isEscape = text.size() >= 4 && text.starts_with("\\x") &&
                          std::from_chars(digits, digits + 2, octet, 16).ptr == digits + 2 &&
                          octet != 0;
    out.push_back(isEscape ? static_cast<char>(octet) : text.front());
    text.remove_prefix(isEscape ? 4 : 1);
  }
  return out;
}

/// A dash in an ID is escaped, so one that stands there ends the launcher before it. What has more
/// of them was not escaped, and is the ID.
std::string withoutLauncher(std::string_view text) {
  const auto dash = text.find('-');
  const bool hasLauncher = dash != std::string_view::npos && dash + 1 < text.size();
  return unescaped(hasLauncher ? text.substr(dash + 1) : text);
}

/// `snap.SNAP.APP` and `snap.SNAP.hook.NAME`, without what makes a unit of it one of many.
Application snapTag(Pieces tag) {
  const bool isTag = tag && std::count(tag->begin(), tag->end(), '.') >= 2 && tag->back() != '.';
  return isTag ? Application(unescaped(*tag)) : std::nullopt;
}

Application flatpakScope(std::string_view unit) {
  const auto named = between("app-flatpak-", unit, ".scope");
  const auto id = named ? beforeLast(*named, '-') : std::nullopt;
  const bool isNumbered =
      id && named->find_first_not_of(kDigits, id->size() + 1) == std::string_view::npos;
  return isNumbered ? Application(unescaped(*id)) : std::nullopt;
}

Application snapScope(std::string_view unit) {
  const auto named = unit.starts_with("snap.") ? between("", unit, ".scope") : std::nullopt;
  return named ? snapTag(beforeUUID(*named)) : std::nullopt;
}

Application snapService(std::string_view unit) {
  return unit.starts_with("snap.") ? snapTag(between("", unit, ".service")) : std::nullopt;
}

Application appScope(std::string_view unit) {
  const auto named = between("app-", unit, ".scope");
  auto id = named ? beforeUUID(*named) : std::nullopt;
  if (named && !id) {
    id = beforeLast(*named, '-');
  }
  return id ? Application(withoutLauncher(*id)) : std::nullopt;
}

Application appService(std::string_view unit) {
  const auto named = between("app-", unit, ".service");
  const auto id = named ? named->substr(0, named->find('@')) : std::string_view();
  return id.empty() ? std::nullopt : Application(withoutLauncher(id));
}

Application scopeApplication(std::string_view unit) {
  for (const auto row : {flatpakScope, snapScope, appScope}) {
    if (auto application = row(unit)) {
      return application;
    }
  }
  return std::nullopt;
}

Application serviceApplication(std::string_view unit, bool isBelowServiceSlice) {
  for (const auto row : {snapService, appService}) {
    if (auto application = row(unit)) {
      return application;
    }
  }
  // A user's service manager holds others' units, and is none of them.
  const bool isNamed = isBelowServiceSlice && !unit.starts_with("user@");
  return isNamed ? Application(unit) : std::nullopt;
}

bool isServiceSlice(std::string_view name) {
  constexpr std::array<std::string_view, 4> kSlices{"system.slice", "app.slice", "session.slice",
                                                    "background.slice"};
  return std::find(kSlices.begin(), kSlices.end(), name) != kSlices.end();
}

/// One that a container runtime makes without a scope.
bool isContainer(std::string_view name) {
  constexpr std::array<std::string_view, 6> kNames{"machine.slice", "docker",   "lxc",
                                                   "payload",       "buildkit", "libpod_parent"};
  constexpr std::array<std::string_view, 4> kPrefixes{"lxc.payload", "kubepods", "systemd-nspawn@",
                                                      "libpod-"};
  const auto begins = [name](std::string_view prefix) { return name.starts_with(prefix); };
  return std::find(kNames.begin(), kNames.end(), name) != kNames.end() ||
         std::any_of(kPrefixes.begin(), kPrefixes.end(), begins);
}

}  // namespace

std::optional<std::string> cgroupApplication(std::string_view path) {
  Application innermost;
  bool isBelowServiceSlice = false;
  while (!path.empty()) {
    const auto name = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(name.size() + 1, path.size()));
    const bool isScope = name.ends_with(".scope");
    isBelowServiceSlice = isBelowServiceSlice || isServiceSlice(name);
    auto application = isScope ? scopeApplication(name) : Application();
    if (isContainer(name) || (isScope && !application)) {
      return std::nullopt;
    }
    if (name.ends_with(".service")) {
      application = serviceApplication(name, isBelowServiceSlice);
    }
    if (application) {
      innermost = std::move(application);
    }
  }
  return innermost;
}

}  // namespace platform
