#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace platform::test {

/// Sets an environment variable, or removes it for nullptr, and puts back what was there at the
/// end.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const char* value) : name_(std::move(name)) {
    if (const char* const former = std::getenv(name_.c_str())) {
      former_ = former;
    }
    set(value);
  }
  ~EnvironmentVariable() { set(former_ ? former_->c_str() : nullptr); }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

 private:
  void set(const char* value) const {
    if (value != nullptr) {
      ::setenv(name_.c_str(), value, 1);
    } else {
      ::unsetenv(name_.c_str());
    }
  }

  const std::string name_;
  std::optional<std::string> former_;
};

}  // namespace platform::test
