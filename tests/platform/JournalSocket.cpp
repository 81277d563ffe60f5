#include "tests/platform/JournalSocket.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>

namespace platform::test {

namespace {

constexpr char kPath[] = "/run/systemd/journal/socket";

bool enterNamespace() {
  static const bool isInside = ::unshare(CLONE_NEWNS) == 0 &&
                               ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                               ::mount("tmpfs", "/run", "tmpfs", 0, nullptr) == 0;
  return isInside;
}

std::string contentOf(const FileDescriptor& file) {
  struct stat status {};
  ::fstat(file.get(), &status);
  std::string text(static_cast<std::size_t>(status.st_size), '\0');
  const ssize_t count = ::pread(file.get(), text.data(), text.size(), 0);
  text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return text;
}

// The descriptor sent along with a message, if there is one.
FileDescriptor descriptorIn(msghdr& message) {
  const cmsghdr* const header = CMSG_FIRSTHDR(&message);
  if (header == nullptr || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS) {
    return {};
  }
  int number = -1;
  std::memcpy(&number, CMSG_DATA(header), sizeof number);
  return FileDescriptor(number);
}

}  // namespace

std::unique_ptr<JournalSocket> JournalSocket::open() {
  if (!enterNamespace()) {
    return nullptr;
  }
  std::filesystem::create_directories(std::filesystem::path(kPath).parent_path());
  std::unique_ptr<JournalSocket> journal(new JournalSocket);
  journal->socket_ =
      FileDescriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, kPath, sizeof kPath);
  const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
  return ::bind(journal->socket_.get(), generic, sizeof address) == 0 ? std::move(journal)
                                                                      : nullptr;
}

JournalSocket::~JournalSocket() { ::unlink(kPath); }

std::string JournalSocket::receive() const {
  std::string bytes(1UL << 20, '\0');
  iovec part{bytes.data(), bytes.size()};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  const ssize_t count = ::recvmsg(socket_.get(), &message, MSG_CMSG_CLOEXEC);
  if (count < 0) {
    return {};
  }
  if (const FileDescriptor file = descriptorIn(message); file.isOpen()) {
    return contentOf(file);
  }
  bytes.resize(static_cast<std::size_t>(count));
  return bytes;
}

}  // namespace platform::test
