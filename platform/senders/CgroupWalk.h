#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace platform {

/// Where the tree of cgroups (version 2) is mounted, also beside the older hierarchies.
struct CgroupMount {
  std::filesystem::path directory;
  /// The path within the tree of what is mounted there, `/` for all of it.
  std::string root;

  /// The mount of a text in the form of /proc/self/mountinfo (proc(5)), one of the whole tree
  /// first.
  static std::optional<CgroupMount> from(std::string_view mountInfo);
  /// That of this process.
  static std::optional<CgroupMount> find();

  bool operator==(const CgroupMount&) const = default;
};

/// A cgroup that is there or was a short while ago.
struct Cgroup {
  std::filesystem::path directory;
  /// Its signing identifier (`cgroupApplication`).
  std::optional<std::string> application;
  /// Uptime in nanoseconds at which it was first missed.
  std::optional<std::uint64_t> goneSince;
};

/// What is known of the tree.
struct CgroupNames {
  /// Further cgroups have no name. One costs some 300 octets, 1 KiB with the longest path.
  static constexpr std::size_t kMaxCount = 32'768;
  /// What is deeper is nobody's application, octets below the mount; three times what is usual.
  static constexpr std::size_t kMaxPath = 512;
  /// How long the name of a cgroup that has gone is kept: its sockets may live on.
  static constexpr std::uint64_t kKeptNanoseconds = 300'000'000'000;

  /// Reads the tree as it is. Takes a millisecond for some hundred cgroups.
  static CgroupNames walk();
  /// Takes over from `before` what has gone since, at the uptime `now`.
  void keepGone(const CgroupNames& before, std::uint64_t now);

  /// By the inode number of the directory, which is the id of the cgroup.
  std::unordered_map<std::uint64_t, Cgroup> byId;
  /// Whether nothing that is there is left out but what is too deep.
  bool isComplete = false;
};

}  // namespace platform
