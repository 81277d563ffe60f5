#pragma once

#include <optional>
#include <string>

#include "platform/store/JSONValue.h"

namespace quilletctl {

/// One query that the proxy has told of. All texts are printable and bounded.
struct QueryEvent {
  /// Of a text, in columns. A name of 255 octets has at most four for each.
  static constexpr std::size_t kMaxText = 1024;
  /// In place of what the proxy does not know.
  static constexpr char kUnknown[] = "-";

  /// No blank is in any of them but the application.
  std::string name = kUnknown;
  std::string type = kUnknown;
  std::string application = kUnknown;
  std::string server = kUnknown;
  /// Absent when the proxy does not tell one there is.
  std::optional<int> rule;
  /// Absent without an answer.
  std::optional<std::string> rcode;
  double milliseconds = 0;

  static QueryEvent from(const platform::JSONValue& params);
};

}  // namespace quilletctl
