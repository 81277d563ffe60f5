#include "control_client/WatchLine.h"

#include <algorithm>
#include <string>

#include "control_client/DisplayText.h"
#include "control_client/Quantities.h"

namespace quilletctl {

namespace {

// A line that is wider leaves the application too far from its name.
constexpr std::size_t kWidestLine = 132;
constexpr std::size_t kTimeWidth = 6;
constexpr std::size_t kCodeWidth = 8;
constexpr std::size_t kServerWidth = 16;
constexpr std::size_t kTypeWidth = 6;

/// What stands in the columns, as it is to be shown.
struct Cells {
  std::string time, code, rule, server, type, name, application;
};

/// Name and application share what is left. The application has two fifths of it, and what the name
/// leaves.
void addNameAndApplication(StyledLine& line, const Cells& cells, std::size_t room) {
  const auto left = room - std::min(room, columnsOf(cells.name) + 1);
  const auto application = cut(cells.application, std::max(left, room * 2 / 5));
  const auto nameWidth = room - std::min(room, columnsOf(application) + 1);
  line.add(padded(cells.name, nameWidth) + ' ').add(application, Style::kFaint);
}

StyledLine lineOf(const Cells& cells, Style codeStyle, std::size_t width) {
  StyledLine line;
  line.add(rightAligned(cells.time, kTimeWidth) + ' ')
      .add(padded(cells.code, kCodeWidth) + ' ', codeStyle)
      .add(padded(cells.rule, 1) + ' ' + padded(cells.server, kServerWidth) + ' ' +
           padded(cells.type, kTypeWidth) + ' ');
  const auto used = line.columns();
  const auto whole = std::min(width, kWidestLine);
  addNameAndApplication(line, cells, whole - std::min(whole, used));
  return line.cutTo(width);
}

Style styleOf(const std::optional<std::string>& rcode) {
  if (!rcode || *rcode == "SERVFAIL" || *rcode == "REFUSED") {
    return Style::kBad;
  }
  return *rcode == "NOERROR" ? Style::kGood : Style::kWarning;
}

}  // namespace

StyledLine watchHeading(std::size_t width) {
  const Cells cells{"ms", "answer", "#", "server", "type", "name", "application"};
  return StyledLine(lineOf(cells, Style::kPlain, width).plain(), Style::kHeading);
}

StyledLine watchLine(const QueryEvent& query, std::size_t width) {
  const Cells cells{millisecondsText(query.milliseconds),
                    query.rcode.value_or("none"),
                    query.rule ? std::to_string(*query.rule) : QueryEvent::kUnknown,
                    query.server,
                    query.type,
                    query.name,
                    query.application};
  return lineOf(cells, styleOf(query.rcode), width);
}

StyledLine watchLost(std::uint64_t count, std::size_t width) {
  const auto text = std::to_string(count) + (count == 1 ? " query" : " queries") +
                    " not shown: there were more than could be read";
  return StyledLine(text, Style::kWarning).cutTo(width);
}

}  // namespace quilletctl
