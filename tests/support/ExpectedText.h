#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace quillet::test {

/// What a test expects to be written, from a file below `tests/`; nothing where there is none.
inline std::string expectedText(const std::string& path) {
  std::ifstream file(QUILLET_TESTS "/" + path);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace quillet::test
