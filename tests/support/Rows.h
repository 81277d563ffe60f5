#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>

namespace quillet::test {

/// Expects that `function` makes of each row's first value its second.
template <class In = std::string, class Out = std::string, class Function>
void expectEach(const Function& function, std::initializer_list<std::pair<In, Out>> rows) {
  for (const auto& [in, out] : rows) {
    EXPECT_EQ(function(in), out) << testing::PrintToString(in).substr(0, 200);
  }
}

}  // namespace quillet::test
