#include "platform/store/FileWatch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "platform/base/Clock.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kFolder = IN_ONLYDIR | IN_DONT_FOLLOW | IN_MOVE_SELF | IN_DELETE_SELF;
constexpr std::uint32_t kEntries = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB;
constexpr std::uint32_t kContent = IN_DONT_FOLLOW | IN_MODIFY | IN_ATTRIB;

std::uint64_t uptime() { return Clock::shared().uptimeNanoseconds(); }

}  // namespace

bool FileWatch::isUnchanged() const { return isQuiet_ && uptime() < end_; }

void FileWatch::forget() {
  isQuiet_ = false;
  end_ = 0;
}

void FileWatch::begin(const fs::path& file) {
  const auto now = uptime();
  if (now < end_) {
    return;
  }
  end_ = now + kLongest;
  std::error_code error;
  const auto path = fs::absolute(file, error);
  const auto former = std::exchange(watches_, {});
  isQuiet_ = !error && open() && watchFolders(path.parent_path()) && watchFile(path);
  remove(former);
}

// Never closed while it may be needed again: the kernel takes milliseconds for that.
bool FileWatch::open() {
  if (!kernel_.isOpen()) {
    kernel_.open(FileDescriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)));
  }
  return kernel_.isOpen() && !kernel_.watch(*this, {true, false});
}

/// A folder further up matters only for where its name leads to.
bool FileWatch::watchFolders(const fs::path& folder) {
  bool isWatched = add(folder, kFolder | kEntries);
  for (auto path = folder; isWatched && path.has_relative_path();) {
    path = path.parent_path();
    isWatched = add(path, kFolder);
  }
  return isWatched;
}

/// One that is not there is an entry that its folder does not have yet.
bool FileWatch::watchFile(const fs::path& file) {
  if (!add(file, kContent) && errno != ENOENT) {
    return false;
  }
  std::error_code ignored;
  const auto type = fs::symlink_status(file, ignored).type();
  return type == fs::file_type::regular || type == fs::file_type::not_found;
}

bool FileWatch::add(const fs::path& path, std::uint32_t events) {
  const int watch = ::inotify_add_watch(kernel_.get(), path.c_str(), events);
  if (watch < 0) {
    return false;
  }
  watches_.push_back(watch);
  return true;
}

/// Of these watches those that are no longer wanted.
void FileWatch::remove(const std::vector<int>& watches) const {
  for (const int watch : watches) {
    if (std::find(watches_.begin(), watches_.end(), watch) == watches_.end()) {
      ::inotify_rm_watch(kernel_.get(), watch);
    }
  }
}

/// Whatever it is, lost events included: something may have changed. What is left of the events
/// comes with the next iteration.
void FileWatch::socketIsReady(bool /*canRead*/, bool /*canWrite*/) {
  isQuiet_ = false;
  alignas(inotify_event) std::array<char, 4096> events;
  if (::read(kernel_.get(), events.data(), events.size()) < 0 && errno != EAGAIN) {
    kernel_.close();
  }
}

}  // namespace platform
