#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/senders/SocketDiagnosis.h"
#include "platform/senders/TimedCompletion.h"

namespace platform {

/// Which program holds a socket, by /proc/PID/fd (proc(5)), on a thread of its own. Processes that
/// this one may not look into (ptrace(2)) are passed over. Inside the event loop only.
class ProcessSearch : public std::enable_shared_from_this<ProcessSearch> {
 public:
  /// Seconds, for those before it too.
  static constexpr double kMaxWait = 0.05;
  /// Sockets that are searched for at a time. Who waits for one holds a flow with its datagrams.
  static constexpr std::size_t kMaxWaiting = 1024;
  /// Sockets whose program is remembered; some 200 octets each. When there are more, all are
  /// forgotten.
  static constexpr std::size_t kMaxRemembered = 4096;

  /// The absolute path of the executable, without ` (deleted)`; absent for none that was found.
  using Executable = std::optional<std::string>;
  using Completion = std::function<void(const Executable& executable)>;

  static std::shared_ptr<ProcessSearch> create();

  /// Looks among the processes of the cgroup that has `directory`; among those of the socket's user
  /// where there is none. Completes at once for a socket that is remembered.
  void find(const SocketOwner& socket, const std::filesystem::path& directory,
            Completion completion);

 private:
  using Timed = TimedCompletion<Executable>;

  ProcessSearch() = default;

  void search(const SocketOwner& socket, const std::filesystem::path& directory);
  void searched(std::uint64_t cookie, const Executable& executable, bool isCertain);

  const DispatchQueue queue_ = DispatchQueue::serial();
  std::unordered_map<std::uint64_t, Executable> remembered_;  // by the socket's cookie
  std::unordered_map<std::uint64_t, std::vector<std::shared_ptr<Timed>>> waiting_;
  std::size_t waitingCount_ = 0;
};

}  // namespace platform
