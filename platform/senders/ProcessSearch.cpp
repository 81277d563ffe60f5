#include "platform/senders/ProcessSearch.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <fstream>
#include <string_view>
#include <utility>

#include "platform/base/Clock.h"
#include "platform/base/WholeNumber.h"
#include "platform/senders/DirectoryReader.h"

namespace platform {

namespace {

using Executable = ProcessSearch::Executable;

constexpr char kProcesses[] = "/proc/";
constexpr std::uint64_t kMaxNanoseconds =
    static_cast<std::uint64_t>(ProcessSearch::kMaxWait * 1'000'000'000);

/// What a symbolic link holds; empty for none.
std::string linkAt(int directory, const char* name) {
  std::array<char, PATH_MAX> target{};
  const auto size = ::readlinkat(directory, name, target.data(), target.size());
  return {target.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

Executable executableOf(const std::string& process) {
  constexpr std::string_view kDeleted = " (deleted)";
  auto path = linkAt(AT_FDCWD, (kProcesses + process + "/exe").c_str());
  if (path.ends_with(kDeleted)) {
    path.resize(path.size() - kDeleted.size());
  }
  return path.starts_with('/') ? Executable(std::move(path)) : std::nullopt;
}

/// One search, until its time is over.
class Search {
 public:
  Search(const SocketOwner& socket, std::uint64_t deadline)
      : user_(socket.user),
        link_("socket:[" + std::to_string(socket.inode) + "]"),
        deadline_(deadline) {}

  Executable run(const std::filesystem::path& cgroup) const {
    std::ifstream list(cgroup / "cgroup.procs");
    return !cgroup.empty() && list ? amongListed(list) : amongTheUsers();
  }
  [[nodiscard]] bool isLate() const { return Clock::shared().uptimeNanoseconds() > deadline_; }

 private:
  Executable amongListed(std::istream& list) const {
    for (std::string id; !isLate() && list >> id;) {
      if (holdsIt(id)) {
        return executableOf(id);
      }
    }
    return std::nullopt;
  }

  Executable amongTheUsers() const {
    DirectoryReader processes(kProcesses);
    for (const auto* entry = processes.next(); entry != nullptr && !isLate();
         entry = processes.next()) {
      struct stat state {};
      const bool isProcess = wholeNumber<unsigned>(entry->d_name).has_value();
      if (isProcess && ::fstatat(processes.descriptor(), entry->d_name, &state, 0) == 0 &&
          state.st_uid == user_ && holdsIt(entry->d_name)) {
        return executableOf(entry->d_name);
      }
    }
    return std::nullopt;
  }

  [[nodiscard]] bool holdsIt(const std::string& process) const {
    DirectoryReader descriptors(kProcesses + process + "/fd");
    for (const auto* entry = descriptors.next(); entry != nullptr && !isLate();
         entry = descriptors.next()) {
      if (linkAt(descriptors.descriptor(), entry->d_name) == link_) {
        return true;
      }
    }
    return false;
  }

  const uid_t user_;
  const std::string link_;
  const std::uint64_t deadline_;
};

}  // namespace

std::shared_ptr<ProcessSearch> ProcessSearch::create() {
  return std::shared_ptr<ProcessSearch>(new ProcessSearch);
}

void ProcessSearch::find(const SocketOwner& socket, const std::filesystem::path& directory,
                         Completion completion) {
  const auto remembered = remembered_.find(socket.cookie);
  if (remembered != remembered_.end() || waitingCount_ >= kMaxWaiting || socket.inode == 0) {
    completion(remembered != remembered_.end() ? remembered->second : std::nullopt);
    return;
  }
  ++waitingCount_;
  auto& waiting = waiting_[socket.cookie];
  waiting.push_back(Timed::within(kMaxWait, std::move(completion)));
  if (waiting.size() == 1) {
    search(socket, directory);
  }
}

void ProcessSearch::search(const SocketOwner& socket, const std::filesystem::path& directory) {
  const auto deadline = Clock::shared().uptimeNanoseconds() + kMaxNanoseconds;
  queue_.async([weak = weak_from_this(), socket, directory, search = Search(socket, deadline)] {
    const auto executable = search.run(directory);
    DispatchQueue::global().async(
        [weak, cookie = socket.cookie, executable, isLate = search.isLate()] {
          if (const auto self = weak.lock()) {
            self->searched(cookie, executable, executable || !isLate);
          }
        });
  });
}

void ProcessSearch::searched(std::uint64_t cookie, const Executable& executable, bool isCertain) {
  if (isCertain) {
    if (remembered_.size() >= kMaxRemembered) {
      remembered_.clear();
    }
    remembered_[cookie] = executable;
  }
  const auto waiting = waiting_.extract(cookie);
  waitingCount_ -= waiting.mapped().size();
  for (const auto& completion : waiting.mapped()) {
    completion->complete(executable);
  }
}

}  // namespace platform
