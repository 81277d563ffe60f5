#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "dnscodec/WireWriter.h"
#include "platform/base/Data.h"

namespace quillet {

/// Appends two lower-case hexadecimal digits for each octet of `bytes`.
void appendHex(std::string& out, platform::DataView bytes);

/// EDNS options one after another, each a code, a length and a text (RFC 6891 section 6.1.2).
class OptionBlock {
 public:
  /// Code and length of one option.
  static constexpr std::size_t kHeadSize = 4;

  /// Whether a value can be added after options of `size` octets: it has at most 65,535 octets, and
  /// after others fits into the data of their record.
  static bool fits(std::size_t size, std::string_view value);

  /// Makes room for `expected` octets ahead.
  explicit OptionBlock(std::size_t expected) : writer_(expected) {}

  /// Adds one option; false for one that does not fit. It is left out whole, and that is one log
  /// line; shorter ones may still follow.
  bool add(std::uint16_t code, std::string_view value);
  /// The options added; the block is empty after it.
  platform::Data finish() { return writer_.finish(); }

 private:
  WireWriter writer_;
};

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
