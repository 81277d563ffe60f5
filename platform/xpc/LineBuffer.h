#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// Puts a byte stream together to lines.
class LineBuffer {
 public:
  /// A line's usual greatest length in bytes, its line feed not counted.
  static constexpr std::size_t kMaxLine = 256UL * 1024;

  explicit LineBuffer(std::size_t maxLine = kMaxLine) : maxLine_(maxLine) {}

  struct Line {
    std::string text;
    /// The line was longer than allowed; `text` is empty.
    bool isTooLong = false;
  };

  void append(std::string_view bytes);
  /// The next whole line without its line feed; absent until there is one.
  std::optional<Line> next();
  /// Whether there is no line, not even the beginning of one.
  [[nodiscard]] bool isEmpty() const { return bytes_.empty() && !isTooLong_; }

 private:
  std::size_t maxLine_;
  std::string bytes_;
  std::size_t searched_ = 0;  // no line feed before it
  bool isTooLong_ = false;    // the beginning of the line is dropped already
};

}  // namespace platform
