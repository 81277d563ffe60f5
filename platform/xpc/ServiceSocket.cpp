#include "platform/xpc/ServiceSocket.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <thread>
#include <utility>

namespace platform {

namespace {

constexpr char kUsualDirectory[] = "/run/quillet";
constexpr mode_t kForEverybody = 0666;
constexpr mode_t kForOwner = 0600;

std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
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
  FileDescriptor file(
      ::open((path.native() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kForOwner));
  for (int i = 0; i < kMaxWaits && ::flock(file.get(), LOCK_EX | LOCK_NB) != 0; ++i) {
    std::this_thread::sleep_for(kShortWait);
  }
  return file;
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

/// Nothing, or what is wrong.
std::optional<std::string> bindReplacing(const FileDescriptor& socket, const sockaddr_un& address) {
  int error = bindTo(socket, address);
  if (error == EADDRINUSE) {
    if (!isStale(address)) {
      return "it is in use";
    }
    ::unlink(address.sun_path);
    error = bindTo(socket, address);
  }
  if (error == 0 &&
      (::chmod(address.sun_path, kForEverybody) != 0 || ::listen(socket.get(), SOMAXCONN) != 0)) {
    error = errno;
  }
  return error == 0 ? std::nullopt : std::optional<std::string>(::strerrordesc_np(error));
}

}  // namespace

std::filesystem::path ServiceSocket::pathOf(const std::string& serviceName) {
  auto directory = environment("RUNTIME_DIRECTORY");
  directory = directory.substr(0, directory.find(':'));
  if (directory.empty()) {
    directory = environment("XDG_RUNTIME_DIR");
  }
  return std::filesystem::path(directory.empty() ? kUsualDirectory : directory) / serviceName;
}

tl::expected<ServiceSocket, Error> ServiceSocket::listen(const std::filesystem::path& path) {
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
  std::error_code ignored;  // what it means shows at once
  std::filesystem::create_directories(path.parent_path(), ignored);
  auto socket = openSocket();
  const auto lock = lockBeside(path);
  if (const auto reason = bindReplacing(socket, address)) {
    return failure(*reason);
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
