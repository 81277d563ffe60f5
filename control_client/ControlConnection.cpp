#include "control_client/ControlConnection.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "control_client/DisplayText.h"
#include "platform/base/Clock.h"

namespace quilletctl {

namespace {

using platform::FileDescriptor;

constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::uint64_t kNanosecondsPerMillisecond = 1'000'000;
constexpr char kProxy[] = "quillet-dns-proxy";

tl::unexpected<Failure> failure(std::string text, int status = kFailed) {
  return tl::unexpected(Failure{status, std::move(text)});
}

/// 0, or the errno value.
int connect(const FileDescriptor& socket, const std::filesystem::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const auto& text = path.native();
  if (text.size() >= sizeof address.sun_path) {
    return ENAMETOOLONG;
  }
  text.copy(address.sun_path, text.size());
  const auto* const plain = reinterpret_cast<const sockaddr*>(&address);
  return ::connect(socket.get(), plain, sizeof address) == 0 ? 0 : errno;
}

FileDescriptor openSocket() {
  FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const timeval patience{ControlConnection::kPatienceSeconds, 0};  // connecting included
  ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
  return socket;
}

bool meansNobodyListens(int error) {
  return error == ENOENT || error == ECONNREFUSED || error == ENOTDIR;
}

std::string reasonOf(int error) {
  return error == EAGAIN ? "it does not take the connection" : ::strerrordesc_np(error);
}

std::string listOf(const std::vector<std::filesystem::path>& places) {
  std::string list;
  for (const auto& place : places) {
    list += (list.empty() ? "" : ", ") + printable(place.native());
  }
  return list;
}

/// Milliseconds until then for poll(2), rounded up; -1: for ever.
int remaining(ControlConnection::Deadline deadline) {
  if (!deadline) {
    return -1;
  }
  const auto now = platform::DispatchTime::now().uptimeNanoseconds;
  return *deadline <= now ? 0
                          : static_cast<int>((*deadline - now) / kNanosecondsPerMillisecond + 1);
}

}  // namespace

ControlConnection::Deadline ControlConnection::patience() {
  return platform::DispatchTime::now().uptimeNanoseconds + kPatienceSeconds * kNanosecondsPerSecond;
}

tl::expected<ControlConnection, Failure> ControlConnection::open(
    const std::vector<std::filesystem::path>& places) {
  std::optional<Failure> reason;
  for (const auto& place : places) {
    auto socket = openSocket();
    const int error = connect(socket, place);
    if (error == 0) {
      return ControlConnection(std::move(socket));
    }
    if (!reason && !meansNobodyListens(error)) {
      reason = Failure{kFailed, printable(place.native()) + ": " + reasonOf(error)};
    }
  }
  if (reason) {
    return tl::unexpected(*reason);
  }
  return failure(kProxy + (" does not run: nobody listens at " + listOf(places)), kNotRunning);
}

tl::expected<void, Failure> ControlConnection::send(std::string_view lines) {
  while (!lines.empty()) {
    const auto sent = ::send(socket_.get(), lines.data(), lines.size(), MSG_NOSIGNAL);
    if (sent < 0 && (errno == EPIPE || errno == ECONNRESET)) {
      return {};
    }
    if (sent < 0 && errno != EINTR) {
      return failure(errno == EAGAIN ? std::string(kProxy) + " does not take the command"
                                     : ::strerrordesc_np(errno));
    }
    lines.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
  }
  return {};
}

tl::expected<std::string, Failure> ControlConnection::line(Deadline deadline) {
  for (;;) {
    auto line = lineIfThere();
    if (!line) {
      return tl::unexpected(std::move(line.error()));
    }
    if (*line) {
      return std::move(**line);
    }
    pollfd ready{socket_.get(), POLLIN, 0};
    if (::poll(&ready, 1, remaining(deadline)) == 0 && remaining(deadline) == 0) {
      return failure(std::string(kProxy) + " gives no answer");
    }
  }
}

tl::expected<std::optional<std::string>, Failure> ControlConnection::lineIfThere() {
  auto line = takeLine();
  if (!line || *line) {
    return line;
  }
  const auto isMoreThere = read();
  if (!isMoreThere) {
    return tl::unexpected(isMoreThere.error());
  }
  return *isMoreThere ? takeLine() : std::nullopt;
}

tl::expected<std::optional<std::string>, Failure> ControlConnection::takeLine() {
  auto line = lines_.next();
  if (!line) {
    return std::nullopt;
  }
  if (line->isTooLong) {
    return failure(std::string(kProxy) + " sends a line that is too long");
  }
  return std::move(line->text);
}

tl::expected<bool, Failure> ControlConnection::read() {
  char bytes[16384];
  const auto size = ::recv(socket_.get(), bytes, sizeof bytes, MSG_DONTWAIT);
  if (size > 0) {
    lines_.append({bytes, static_cast<std::size_t>(size)});
    return true;
  }
  if (size == 0 || errno == ECONNRESET) {
    return lines_.isEmpty() ? failure(std::string(kProxy) + " has ended", kNotRunning)
                            : failure(std::string(kProxy) + " has ended within a line");
  }
  if (errno == EAGAIN || errno == EINTR) {
    return false;
  }
  return failure(::strerrordesc_np(errno));
}

}  // namespace quilletctl
