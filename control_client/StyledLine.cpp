#include "control_client/StyledLine.h"

#include <utility>

#include "control_client/DisplayText.h"

namespace quilletctl {

namespace {

std::string_view sequenceFor(Style style) {
  switch (style) {
    case Style::kPlain:
      return "";
    case Style::kHeading:
      return "\x1B[1m";
    case Style::kFaint:
      return "\x1B[2m";
    case Style::kGood:
      return "\x1B[32m";
    case Style::kWarning:
      return "\x1B[33m";
    case Style::kBad:
      return "\x1B[31m";
    case Style::kBar:
      return "\x1B[36m";
  }
  return "";
}

constexpr std::string_view kReset = "\x1B[0m";

}  // namespace

StyledLine& StyledLine::add(std::string text, Style style) {
  spans_.push_back({std::move(text), style});
  return *this;
}

StyledLine& StyledLine::addAt(std::size_t column, const StyledLine& other) {
  if (const auto end = columns(); end < column) {
    add(std::string(column - end, ' '));
  }
  spans_.insert(spans_.end(), other.spans_.begin(), other.spans_.end());
  return *this;
}

std::size_t StyledLine::columns() const {
  std::size_t sum = 0;
  for (const auto& span : spans_) {
    sum += columnsOf(span.text);
  }
  return sum;
}

StyledLine StyledLine::cutTo(std::size_t width) const {
  if (columns() <= width) {
    return *this;
  }
  StyledLine result;
  for (const auto& span : spans_) {
    const auto columns = columnsOf(span.text);
    if (columns >= width) {  // more follows, so the sign of what is cut stands here
      result.add(cut(span.text + ' ' + ' ', width), span.style);
      break;
    }
    result.add(span.text, span.style);
    width -= columns;
  }
  return result;
}

std::string StyledLine::plain() const {
  std::string out;
  for (const auto& span : spans_) {
    out += span.text;
  }
  return out;
}

std::string StyledLine::coloured() const {
  std::string out;
  for (const auto& span : spans_) {
    const auto sequence = sequenceFor(span.style);
    out.append(sequence).append(span.text).append(sequence.empty() ? "" : kReset);
  }
  return out;
}

}  // namespace quilletctl
