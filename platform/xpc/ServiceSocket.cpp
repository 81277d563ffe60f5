#include "platform/xpc/ServiceSocket.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

namespace platform {

namespace {

constexpr mode_t kForOwner = 0600;
constexpr mode_t kFolderMode = 0755;

/// Gives a file that we have just made its mode whatever the umask, which belongs to all threads. A
/// link, or what others have put in its place, keeps its own. 0, or the errno value.
int setMode(const std::filesystem::path& path, mode_t type, mode_t mode) {
  const FileDescriptor file(::open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  struct stat status {};
  if (!file.isOpen() || ::fstat(file.get(), &status) != 0) {
    return errno;
  }
  if ((status.st_mode & S_IFMT) != type || status.st_uid != ::geteuid()) {
    return EPERM;
  }
  const auto self = "/proc/self/fd/" + std::to_string(file.get());  // as O_PATH has no fchmod
  return ::chmod(self.c_str(), mode) == 0 ? 0 : errno;
}

/// What cannot be made shows when the socket is.
void makeFolders(const std::filesystem::path& folder) {
  std::error_code ignored;
  if (folder.empty() || std::filesystem::exists(folder, ignored)) {
    return;
  }
  makeFolders(folder.parent_path());
  if (::mkdir(folder.c_str(), kFolderMode) == 0) {
    setMode(folder, S_IFDIR, kFolderMode);
  }
}

FileDescriptor openSocket() {
  return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

const sockaddr* plain(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

/// 0, or the errno value.
int bindTo(const FileDescriptor& socket, const sockaddr_un& address) {
  return ::bind(socket.get(), plain(address), sizeof address) == 0 ? 0 : errno;
}

constexpr std::chrono::milliseconds kShortWait{5};
constexpr int kMaxWaits = 20;

/// A lock on a file beside the socket's, held until it is closed. It keeps services that start at
/// the same instant from taking each other's socket, which is not yet listened at, for a stale one.
/// They hold it for an instant; who holds it longer is not waited for.
FileDescriptor lockBeside(const std::filesystem::path& path) {
  FileDescriptor file(::open((path.native() + ".lock").c_str(),
                             O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kForOwner));
  for (int i = 0; file.isOpen() && i < kMaxWaits && ::flock(file.get(), LOCK_EX | LOCK_NB) != 0;
       ++i) {
    std::this_thread::sleep_for(kShortWait);
  }
  return file;
}

/// Why a file that is there stays there.
const char* reasonOfUse(const std::filesystem::path& path) {
  std::error_code ignored;
  const auto type = std::filesystem::symlink_status(path, ignored).type();
  return type == std::filesystem::file_type::socket ? "it is in use" : "it is no socket";
}

/// Whether the file is a socket that nobody listens at any more.
bool isStale(const sockaddr_un& address) {
  struct stat file {};
  if (::lstat(address.sun_path, &file) != 0 || !S_ISSOCK(file.st_mode)) {
    return false;
  }
  const auto probe = openSocket();
  return ::connect(probe.get(), plain(address), sizeof address) != 0 && errno == ECONNREFUSED;
}

/// 0, or the errno value.
int bindReplacing(const FileDescriptor& socket, const sockaddr_un& address) {
  int error = bindTo(socket, address);
  if (error == EADDRINUSE && isStale(address)) {
    ::unlink(address.sun_path);
    error = bindTo(socket, address);
  }
  return error;
}

/// 0, or the errno value. The file that comes into being takes over the socket's own mode, less the
/// umask; it has `mode` in full before anybody can connect.
int listenAt(const FileDescriptor& socket, const sockaddr_un& address, mode_t mode) {
  if (::fchmod(socket.get(), mode) != 0) {
    return errno;
  }
  if (const int error = bindReplacing(socket, address)) {
    return error;
  }
  if (const int error = setMode(address.sun_path, S_IFSOCK, mode)) {
    return error;
  }
  return ::listen(socket.get(), SOMAXCONN) == 0 ? 0 : errno;
}

}  // namespace

tl::expected<ServiceSocket, Error> ServiceSocket::listen(const std::filesystem::path& path,
                                                         mode_t mode) {
  const auto failure = [&path](const std::string& reason) {
    return tl::unexpected(Error("cannot listen at " + path.string() + ": " + reason));
  };
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const auto& text = path.native();
  if (text.size() >= sizeof address.sun_path) {
    return failure("the path is too long");
  }
  text.copy(address.sun_path, text.size());
  makeFolders(path.parent_path());
  auto socket = openSocket();
  const auto lock = lockBeside(path);
  if (const int error = listenAt(socket, address, mode)) {
    return failure(error == EADDRINUSE ? reasonOfUse(path) : ::strerrordesc_np(error));
  }
  return ServiceSocket(std::move(socket), path);
}

ServiceSocket::ServiceSocket(FileDescriptor socket, std::filesystem::path path)
    : socket_(std::move(socket)), path_(std::move(path)) {
  ::lstat(path_.c_str(), &file_);
}

ServiceSocket::~ServiceSocket() {
  struct stat present {};
  if (!path_.empty() && ::lstat(path_.c_str(), &present) == 0 && present.st_dev == file_.st_dev &&
      present.st_ino == file_.st_ino) {
    ::unlink(path_.c_str());
  }
}

}  // namespace platform
