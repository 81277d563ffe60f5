#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quilletctl {

/// How a text is set off from others, in colour where there is colour.
enum class Style { kPlain, kHeading, kFaint, kGood, kWarning, kBad, kBar };

/// One line of printable texts, each in a style.
class StyledLine {
 public:
  struct Span {
    std::string text;
    Style style;
  };

  StyledLine() = default;
  explicit StyledLine(std::string text, Style style = Style::kPlain) {
    add(std::move(text), style);
  }

  StyledLine& add(std::string text, Style style = Style::kPlain);
  /// Another line's texts, from `column` on, or after what stands there already.
  StyledLine& addAt(std::size_t column, const StyledLine& other);

  [[nodiscard]] std::size_t columns() const;
  [[nodiscard]] StyledLine cutTo(std::size_t width) const;
  [[nodiscard]] const std::vector<Span>& spans() const { return spans_; }

  [[nodiscard]] std::string plain() const;
  /// With the control sequences of ECMA-48 (SGR) for its colours.
  [[nodiscard]] std::string coloured() const;

 private:
  std::vector<Span> spans_;
};

}  // namespace quilletctl
