#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

#include "control_client/Failure.h"
#include "control_client/StyledLine.h"
#include "control_client/TopLayout.h"

namespace quilletctl {

/// The whole terminal, for as long as it lives; afterwards it is as it was. One at a time.
class TopScreen {
 public:
  /// Fails where standard input and output are no terminal, or one that nothing is known of.
  static tl::expected<TopScreen, Failure> open(bool inColour);

  void draw(const std::vector<StyledLine>& lines);
  /// The next key that was pressed; absent when there is none.
  std::optional<int> key();
  [[nodiscard]] ScreenSize size() const;
  /// Takes over the terminal's present size.
  void followSize();

 private:
  struct Library;
  explicit TopScreen(std::shared_ptr<Library> library) : library_(std::move(library)) {}

  std::shared_ptr<Library> library_;
};

}  // namespace quilletctl
