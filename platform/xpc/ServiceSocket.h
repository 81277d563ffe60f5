#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <tl/expected.hpp>

#include "platform/base/Error.h"
#include "platform/base/FileDescriptor.h"

namespace platform {

/// A Unix stream socket that clients find by a service's name (`servicePlaces`), for as long as it
/// lives.
class ServiceSocket {
 public:
  /// For every user: who may reach the service is what the folder's permissions say.
  static constexpr mode_t kForEverybody = 0666;

  /// Listens at `path`; the file has `mode` before anybody can connect, whatever the umask. Folders
  /// that are missing are made, for everybody to enter. A socket that nobody listens at is
  /// replaced, a link never followed. The error names the path and says what is wrong.
  static tl::expected<ServiceSocket, Error> listen(const std::filesystem::path& path,
                                                   mode_t mode = kForEverybody);

  ServiceSocket(ServiceSocket&&) = default;
  ServiceSocket& operator=(ServiceSocket&&) = delete;
  ServiceSocket(const ServiceSocket&) = delete;
  ServiceSocket& operator=(const ServiceSocket&) = delete;
  /// Removes the file, unless another has taken its place.
  ~ServiceSocket();

  /// Non-blocking; ready to read when a client is there.
  [[nodiscard]] int get() const { return socket_.get(); }
  /// Gives the descriptor away, to be watched.
  FileDescriptor take() { return std::move(socket_); }

 private:
  ServiceSocket(FileDescriptor socket, std::filesystem::path path);

  FileDescriptor socket_;
  std::filesystem::path path_;
  struct stat file_ {};
};

}  // namespace platform
