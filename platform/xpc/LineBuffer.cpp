#include "platform/xpc/LineBuffer.h"

#include <utility>

namespace platform {

void LineBuffer::append(std::string_view bytes) { bytes_.append(bytes); }

std::optional<LineBuffer::Line> LineBuffer::next() {
  const auto end = bytes_.find('\n', searched_);
  if (end == std::string::npos) {
    if (bytes_.size() > maxLine_) {
      isTooLong_ = true;
      bytes_.clear();
    }
    searched_ = bytes_.size();
    return std::nullopt;
  }
  Line line;
  line.isTooLong = std::exchange(isTooLong_, false) || end > maxLine_;
  if (!line.isTooLong) {
    line.text = bytes_.substr(0, end);
  }
  bytes_.erase(0, end + 1);
  searched_ = 0;
  return line;
}

}  // namespace platform
