#pragma once

#include <clocale>

namespace quilletctl::test {

/// What a terminal takes, while it lives; afterwards ASCII.
class Locale {
 public:
  explicit Locale(const char* name = "C.UTF-8") { std::setlocale(LC_CTYPE, name); }
  ~Locale() { std::setlocale(LC_CTYPE, "C"); }
  Locale(const Locale&) = delete;
  Locale& operator=(const Locale&) = delete;
};

}  // namespace quilletctl::test
