#include "platform/senders/CgroupWalk.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <sstream>
#include <vector>

#include "platform/senders/CgroupApplication.h"
#include "platform/senders/DirectoryReader.h"

namespace platform {

namespace {

constexpr char kMountInfo[] = "/proc/self/mountinfo";
// A longer line is not looked at further; paths have 4096 octets at most.
constexpr std::size_t kMaxLine = 16UL * 1024;

/// Undoes the `\NNN` that stand for blanks and the like.
std::string withoutEscapes(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    unsigned char octet = 0;
    const auto* const digits = text.data() + 1;
    const bool isEscape = text.size() >= 4 && text.front() == '\\' &&
                          std::from_chars(digits, digits + 3, octet, 8).ptr == digits + 3;
    out.push_back(isEscape ? static_cast<char>(octet) : text.front());
    text.remove_prefix(isEscape ? 4 : 1);
  }
  return out;
}

/// `36 35 0:28 ROOT DIRECTORY OPTIONS [FIELD...] - TYPE SOURCE OPTIONS`
std::optional<CgroupMount> mountOf(const std::string& line) {
  std::istringstream fields(line);
  std::string skipped;
  std::string root;
  std::string directory;
  fields >> skipped >> skipped >> skipped >> root >> directory;
  while (fields >> skipped && skipped != "-") {
  }
  std::string type;
  return fields >> type && type == "cgroup2"
             ? std::optional(CgroupMount{withoutEscapes(directory), withoutEscapes(root)})
             : std::nullopt;
}

/// One walk through the tree.
class Walk {
 public:
  Walk(const CgroupMount& mount, CgroupNames& names) : mount_(mount), names_(names) {}

  void run() {
    struct stat root {};
    names_.isComplete = ::stat(mount_.directory.c_str(), &root) == 0;
    if (names_.isComplete) {
      add(root, "");
    }
    while (!toRead_.empty()) {
      const auto path = std::move(toRead_.back());
      toRead_.pop_back();
      read(path);
    }
  }

 private:
  /// `path` is that below the mount. A directory without directories in it has two links.
  void add(const struct stat& state, const std::string& path) {
    if (path.size() > CgroupNames::kMaxPath) {
      return;
    }
    if (names_.byId.size() >= CgroupNames::kMaxCount) {
      names_.isComplete = false;
      return;
    }
    const auto whole = mount_.root == "/" ? path : mount_.root + path;
    names_.byId.try_emplace(state.st_ino, Cgroup{mount_.directory.native() + path,
                                                 cgroupApplication(whole), std::nullopt});
    if (state.st_nlink != 2) {
      toRead_.push_back(path);
    }
  }

  void read(const std::string& path) {
    DirectoryReader directory(mount_.directory.native() + path);
    if (!directory.isOpen()) {
      names_.isComplete = names_.isComplete && errno == ENOENT;  // gone meanwhile
      return;
    }
    while (const auto* entry = directory.next()) {
      struct stat state {};
      if (entry->d_type == DT_DIR &&
          ::fstatat(directory.descriptor(), entry->d_name, &state, AT_SYMLINK_NOFOLLOW) == 0) {
        add(state, path + "/" + entry->d_name);
      }
    }
  }

  const CgroupMount& mount_;
  CgroupNames& names_;
  std::vector<std::string> toRead_;
};

}  // namespace

std::optional<CgroupMount> CgroupMount::from(std::string_view mountInfo) {
  std::optional<CgroupMount> first;
  while (!mountInfo.empty()) {
    const auto line = mountInfo.substr(0, mountInfo.find('\n'));
    mountInfo.remove_prefix(std::min(line.size() + 1, mountInfo.size()));
    auto mount = mountOf(std::string(line.substr(0, kMaxLine)));
    if (mount && mount->root == "/") {
      return mount;
    }
    first = first ? first : mount;
  }
  return first;
}

std::optional<CgroupMount> CgroupMount::find() {
  std::ifstream file(kMountInfo);
  std::ostringstream text;
  text << file.rdbuf();
  return from(text.view());
}

CgroupNames CgroupNames::walk() {
  CgroupNames names;
  names.isComplete = true;
  if (const auto mount = CgroupMount::find()) {
    Walk(*mount, names).run();
  }
  return names;
}

void CgroupNames::keepGone(const CgroupNames& before, std::uint64_t now) {
  for (const auto& [id, cgroup] : before.byId) {
    const auto since = cgroup.goneSince.value_or(now);
    if (byId.size() < kMaxCount && now - since < kKeptNanoseconds) {
      const auto [kept, isGone] = byId.try_emplace(id, cgroup);
      if (isGone) {
        kept->second.goneSince = since;
      }
    }
  }
}

}  // namespace platform
