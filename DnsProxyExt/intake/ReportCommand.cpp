#include "DnsProxyExt/intake/ReportCommand.h"

#include <vector>

#include "platform/base/DecimalText.h"
#include "platform/base/RemoveOccurrences.h"
#include "platform/log/NSLog.h"

namespace quillet {

using platform::NSLog;

namespace {

constexpr char kMarker[] = "quillet_osx_filter";
constexpr char kPrefix[] = "quillet_osx_filter_";

std::vector<std::string_view> splitAtUnderscores(std::string_view text) {
  std::vector<std::string_view> tokens;
  while (true) {
    const auto end = text.find('_');
    tokens.push_back(text.substr(0, end));
    if (end == std::string_view::npos) {
      return tokens;
    }
    text.remove_prefix(end + 1);
  }
}

}  // namespace

std::optional<ReportSettings> reportCommand(std::string_view questionName) {
  if (questionName.find(kMarker) == std::string_view::npos) {
    return std::nullopt;
  }
  return reportParameters(platform::removingOccurrences(questionName, kPrefix));
}

ReportSettings reportParameters(std::string_view text) {
  NSLog("got params string: ", text);
  const auto tokens = splitAtUnderscores(text);
  ReportSettings settings;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const bool hasNext = i + 1 < tokens.size();
    if (tokens[i] == "p") {
      if (hasNext) {
        settings.package = tokens[i + 1];
      }
    } else if (tokens[i] == "tf") {
      if (hasNext) {
        settings.forLastSecs = platform::decimalInteger(tokens[i + 1]);
      }
    } else if (tokens[i] == "d") {
      settings.detailed = true;
    } else {
      NSLog("");
    }
  }
  return settings;
}

}  // namespace quillet
