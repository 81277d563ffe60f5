#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillet {

/// The command line of `dig` that sends the filtering service the same options by hand: a help for
/// those who read the log.
class DigCommand {
 public:
  /// Makes room for `optionCount` options ahead, whose values have `valueSize` octets together.
  DigCommand(std::size_t optionCount, std::size_t valueSize);

  void addOption(std::uint16_t code, std::string_view value);
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  std::string text_;
};

}  // namespace quillet
