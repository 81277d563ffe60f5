#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/base/Description.h"
#include "platform/log/NSLog.h"

namespace quillet {

/// Takes a report line by line.
class LineSink {
 public:
  explicit LineSink(std::function<void(std::string_view)> take) : take_(std::move(take)) {}

  /// One that makes each line a log record.
  static LineSink log() {
    return LineSink([](std::string_view line) { platform::NSLog(line); });
  }

  /// One line: the plain forms of `pieces` in their order.
  template <class... Pieces>
  void print(const Pieces&... pieces) const {
    std::string line;
    (platform::describe(line, pieces), ...);
    take_(line);
  }

 private:
  std::function<void(std::string_view)> take_;
};

}  // namespace quillet
