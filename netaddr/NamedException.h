#pragma once

#include <exception>
#include <string_view>

namespace quillet {

/// A misuse of an address or number class, told by a name and a reason. Both are fixed texts: an
/// exception neither allocates nor owns anything.
class NamedException : public std::exception {
 public:
  /// Both texts are string literals.
  NamedException(const char* name, const char* reason) : name_(name), reason_(reason) {}

  [[nodiscard]] std::string_view name() const { return name_; }
  [[nodiscard]] std::string_view reason() const { return reason_; }
  [[nodiscard]] const char* what() const noexcept override { return reason_; }

 private:
  const char* name_;
  const char* reason_;
};

}  // namespace quillet
