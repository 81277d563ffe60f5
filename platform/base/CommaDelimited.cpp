#include "platform/base/CommaDelimited.h"

namespace platform {

std::vector<std::string> parseCommaDelimitedArr(std::string_view text) {
  std::vector<std::string> pieces;
  if (text.empty()) {
    return pieces;
  }
  while (true) {
    const auto comma = text.find(',');
    pieces.emplace_back(text.substr(0, comma));
    if (comma == std::string_view::npos) {
      return pieces;
    }
    text.remove_prefix(comma + 1);
  }
}

}  // namespace platform
