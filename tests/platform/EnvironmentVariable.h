#pragma once

#include <cstdlib>
#include <string>
#include <utility>

namespace platform::test {

/// Sets an environment variable while it lives, or removes it for nullptr; afterwards it is unset.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const char* value) : name_(std::move(name)) {
    value != nullptr ? ::setenv(name_.c_str(), value, 1) : ::unsetenv(name_.c_str());
  }
  ~EnvironmentVariable() { ::unsetenv(name_.c_str()); }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

 private:
  const std::string name_;
};

}  // namespace platform::test
