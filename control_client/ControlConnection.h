#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

#include "control_client/Failure.h"
#include "platform/base/FileDescriptor.h"
#include "platform/xpc/LineBuffer.h"

namespace quilletctl {

/// A connection to the proxy's control socket, and the lines on it. The other side may be slow, or
/// somebody else: a line is bounded, and so is the time that connecting and sending take.
class ControlConnection {
 public:
  /// A report of all flows has some MB.
  static constexpr std::size_t kMaxLine = 16UL << 20;
  static constexpr int kPatienceSeconds = 5;

  /// By the uptime of the shared clock, in nanoseconds; absent: for ever.
  using Deadline = std::optional<std::uint64_t>;
  static Deadline patience();

  /// Connects to the first of `places` at which something answers. The failure is `kNotRunning`
  /// when nobody listens at any, `kFailed` when one cannot be reached for another reason.
  static tl::expected<ControlConnection, Failure> open(
      const std::vector<std::filesystem::path>& places);

  /// Sends whole lines. That the other side has closed shows when an answer is read: it may have
  /// said why.
  tl::expected<void, Failure> send(std::string_view lines);

  /// The next line without its line feed; waits for it. At the end, outside a line, the failure is
  /// `kNotRunning`.
  tl::expected<std::string, Failure> line(Deadline deadline);

  /// The same without waiting; absent when there is no whole line yet.
  tl::expected<std::optional<std::string>, Failure> lineIfThere();

  /// To wait at together with other descriptors: readable when `lineIfThere` can go on.
  [[nodiscard]] int descriptor() const { return socket_.get(); }

 private:
  explicit ControlConnection(platform::FileDescriptor socket) : socket_(std::move(socket)) {}

  tl::expected<std::optional<std::string>, Failure> takeLine();
  /// Reads what is there; false when that is nothing.
  tl::expected<bool, Failure> read();

  platform::FileDescriptor socket_;
  platform::LineBuffer lines_{kMaxLine};
};

}  // namespace quilletctl
