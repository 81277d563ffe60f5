#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>

namespace quilletctl {

/// What the proxy can be asked for.
struct Status {};
struct Explain {
  std::string name;
  std::optional<std::string> application;
};
struct Watch {};
struct Top {};
struct Report {
  std::optional<std::uint64_t> seconds;
  std::optional<std::string> application;
  bool isDetailed = false;
};
struct Bypass {
  bool isOn = false;
};
struct Reload {};
struct Log {
  /// "full" or "brief"
  std::string mode;
};
struct Metrics {};

using Command = std::variant<Status, Explain, Watch, Top, Report, Bypass, Reload, Log, Metrics>;

/// A command, and how it reaches the proxy and is answered. All texts are valid UTF-8.
struct Invocation {
  Command command;
  /// Absent: the usual places.
  std::optional<std::filesystem::path> socket;
  /// Whether the result is printed as it came.
  bool asJSON = false;
};

/// Does it: the result goes to standard output, what went wrong to standard error. Gives what the
/// program is to end with. `watch` and `top` go on until the proxy or somebody ends them.
int run(const Invocation& invocation);

}  // namespace quilletctl
