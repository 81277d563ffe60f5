#include "platform/base/RemoveOccurrences.h"

namespace platform {

std::string removingOccurrences(std::string_view text, std::string_view piece) {
  std::string out;
  out.reserve(text.size());
  for (auto found = text.find(piece); found != std::string_view::npos; found = text.find(piece)) {
    out.append(text.substr(0, found));
    text.remove_prefix(found + piece.size());
  }
  out.append(text);
  return out;
}

}  // namespace platform
