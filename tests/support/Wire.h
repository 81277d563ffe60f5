#pragma once

#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/base/Data.h"

namespace quillet::test {

/// The octets written as hexadecimal digits; blanks between them are for the reader.
inline platform::Data hex(std::string_view digits) {
  platform::Data bytes;
  int high = -1;
  for (const char c : digits) {
    if (c == ' ' || c == '\n') {
      continue;
    }
    const auto digit = std::string_view("0123456789abcdef").find(static_cast<char>(c | 0x20));
    if (digit == std::string_view::npos) {
      throw std::invalid_argument("no hexadecimal digit");
    }
    if (high < 0) {
      high = static_cast<int>(digit);
    } else {
      bytes.push_back(static_cast<std::uint8_t>(high * 16 + static_cast<int>(digit)));
      high = -1;
    }
  }
  if (high >= 0) {
    throw std::invalid_argument("half an octet");
  }
  return bytes;
}

/// The octets of all pieces together.
inline platform::Data hex(std::initializer_list<std::string_view> pieces) {
  std::string digits;
  for (const auto piece : pieces) {
    digits.append(piece);
  }
  return hex(std::string_view(digits));
}

/// The octets of a name without compression: "a.b" is 01 61 01 62 00.
inline platform::Data wireName(std::string_view name) {
  platform::Data bytes;
  while (!name.empty()) {
    const auto label = name.substr(0, name.find('.'));
    bytes.push_back(static_cast<std::uint8_t>(label.size()));
    bytes.insert(bytes.end(), label.begin(), label.end());
    name.remove_prefix(label.size() == name.size() ? label.size() : label.size() + 1);
  }
  bytes.push_back(0);
  return bytes;
}

/// A query with RD set for one question of class IN.
inline platform::Data query(std::string_view name, std::uint8_t type = 1, std::uint8_t id = 0x34) {
  auto bytes = hex("12 00 01 00 00 01 00 00 00 00 00 00");
  bytes[1] = id;
  const auto wire = wireName(name);
  bytes.insert(bytes.end(), wire.begin(), wire.end());
  bytes.insert(bytes.end(), {0, type, 0, 1});
  return bytes;
}

}  // namespace quillet::test
