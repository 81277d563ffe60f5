#include "control_client/Sheet.h"

#include "control_client/DisplayText.h"

namespace quilletctl {

namespace {

// Of what stands beside a head; where there is less it goes below.
constexpr std::size_t kNarrowest = 16;
constexpr std::size_t kIndent = 2;

std::string withoutTrailingBlanks(const std::string& line) {
  return line.substr(0, line.find_last_not_of(' ') + 1);
}

}  // namespace

Sheet& Sheet::line(const std::string& head, std::string_view text) {
  const auto beside = columnsOf(head);
  const bool isBeside = beside + kNarrowest <= width_;
  const auto column = isBeside ? beside : kIndent;
  auto begin = head;
  if (!isBeside) {
    for (const auto& part : wrapped(head, width_)) {
      text_ += withoutTrailingBlanks(part) + '\n';
    }
    if (text.empty()) {
      return *this;
    }
    begin = std::string(column, ' ');
  }
  for (const auto& part : wrapped(text, width_ - std::min(width_, column))) {
    text_ += withoutTrailingBlanks(begin + part) + '\n';
    begin = std::string(column, ' ');
  }
  return *this;
}

Sheet& Sheet::blankLine() {
  text_ += '\n';
  return *this;
}

}  // namespace quilletctl
