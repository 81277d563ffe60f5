#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/log/LogSink.h"

namespace quillet::test {

/// Keeps every log record written while it lives.
class LogCapture {
 public:
  LogCapture() {
    auto sink = std::make_unique<Sink>();
    sink->records = &records_;
    platform::LogSink::setShared(std::move(sink));
  }
  ~LogCapture() { platform::LogSink::setShared(std::make_unique<Sink>()); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  [[nodiscard]] const std::vector<std::string>& records() const { return records_; }
  void clear() { records_.clear(); }

 private:
  // Without `records` it drops what it is given, so that a test's output stays readable.
  struct Sink : platform::LogSink {
    void write(std::string_view text) override {
      if (records != nullptr) {
        records->emplace_back(text);
      }
    }
    std::vector<std::string>* records = nullptr;
  };

  std::vector<std::string> records_;
};

}  // namespace quillet::test
