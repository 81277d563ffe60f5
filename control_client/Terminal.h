#pragma once

#include <cstddef>
#include <optional>

namespace quilletctl {

struct ScreenSize {
  std::size_t width = 0;
  std::size_t height = 0;
};

/// Of the terminal behind a descriptor; absent when it is none, or does not know.
std::optional<ScreenSize> terminalSize(int descriptor);

/// Columns of standard output: its terminal's, else 80.
std::size_t outputWidth();

/// Whether standard output is a terminal.
bool isOutputTerminal();

/// Whether standard output takes colours: a terminal, but a dumb one, and NO_COLOR is not set.
bool isOutputColoured();

}  // namespace quilletctl
