#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "platform/dispatch/WatchedSocket.h"

namespace platform {

/// Knows of one file, by inotify(7), that nothing has happened to it since it was looked at.
///
/// The kernel tells the event loop of a change; an iteration hears of it before the work that it
/// was given runs. Where the kernel cannot be relied on (a symbolic link in the path, a folder that
/// is not there or must not be read, no instance left), nothing is known. What it never tells of
/// (another machine's change, a file that is mapped, a mount over the path) is bounded by
/// `kLongest`. Inside the event loop only.
class FileWatch final : private SocketWatcher {
 public:
  /// How long a watch is relied on, and how long there is no other, nanoseconds: it costs as many
  /// system calls as the path has folders, and a folder may be a busy one.
  static constexpr std::uint64_t kLongest = 1'000'000'000;

  FileWatch() = default;
  ~FileWatch() = default;
  FileWatch(const FileWatch&) = delete;
  FileWatch& operator=(const FileWatch&) = delete;

  /// Whether nothing has happened to the file, nor to its path, since `begin`.
  [[nodiscard]] bool isUnchanged() const;
  /// To be called before each look at `file` while it may have changed.
  void begin(const std::filesystem::path& file);
  /// Knows nothing any more; for another file.
  void forget();

 private:
  bool open();
  bool watchFolders(const std::filesystem::path& folder);
  bool watchFile(const std::filesystem::path& file);
  bool add(const std::filesystem::path& path, std::uint32_t events);
  void remove(const std::vector<int>& watches) const;

  void socketIsReady(bool canRead, bool canWrite) override;

  WatchedSocket kernel_;  // the inotify instance
  std::vector<int> watches_;
  bool isQuiet_ = false;
  std::uint64_t end_ = 0;  // of the time for which it is relied on
};

}  // namespace platform
