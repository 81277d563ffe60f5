#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quilletctl {

/// Puts lines together that stay within a width; takes printable texts.
class Sheet {
 public:
  explicit Sheet(std::size_t width) : width_(width) {}

  /// `head`, and `text` behind it, wrapped so that its lines stand under each other.
  Sheet& line(const std::string& head, std::string_view text = {});
  Sheet& blankLine();

  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  std::size_t width_;
  std::string text_;
};

}  // namespace quilletctl
