#pragma once

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/base/Data.h"

namespace quillet::test {

/// The octets written as hexadecimal digits; blanks between them are for the reader.
inline platform::Data hex(std::string_view text) {
  std::string digits(text);
  std::erase_if(digits, [](char c) { return c == ' ' || c == '\n'; });
  if (digits.size() % 2 != 0) {
    throw std::invalid_argument("half an octet");
  }
  platform::Data bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

/// A query with RD set for one question of class IN; "a.b" goes as 01 61 01 62 00.
inline platform::Data query(std::string_view name, std::uint8_t type = 1, std::uint8_t id = 0x34) {
  auto bytes = hex("12 00 01 00 00 01 00 00 00 00 00 00");
  bytes[1] = id;
  while (!name.empty()) {
    const auto label = name.substr(0, name.find('.'));
    bytes.push_back(static_cast<std::uint8_t>(label.size()));
    bytes.insert(bytes.end(), label.begin(), label.end());
    name.remove_prefix(std::min(label.size() + 1, name.size()));
  }
  bytes.insert(bytes.end(), {0, 0, type, 0, 1});
  return bytes;
}

}  // namespace quillet::test
