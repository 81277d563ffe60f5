#pragma once

#include <string>
#include <utility>

namespace platform {

/// A failure as it travels through callbacks and into log texts; printed as its text.
class Error {
 public:
  explicit Error(std::string text) : text_(std::move(text)) {}

  [[nodiscard]] const std::string& text() const { return text_; }
  void describe(std::string& out) const { out.append(text_); }

  bool operator==(const Error&) const = default;

 private:
  std::string text_;
};

}  // namespace platform
