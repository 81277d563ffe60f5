#include "platform/senders/DiagnosisSocket.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/base/SystemError.h"

namespace platform {

using socket_diagnosis::Answer;

namespace {

// Reads for one request; a list has some 200 sockets in each, an exact answer takes one.
constexpr int kMaxReads = 64;

}  // namespace

tl::expected<std::vector<DiagnosedSocket>, std::error_code> DiagnosisSocket::ask(
    const Data& request, bool isList) {
  std::vector<DiagnosedSocket> found;
  auto error = send(request);
  error = error ? error : receive(isList, found);
  if (error && error != std::errc::no_such_file_or_directory) {  // that one is a whole answer
    socket_.reset();
  }
  if (error) {
    return tl::unexpected(error);
  }
  return found;
}

std::vector<Answer> DiagnosisSocket::askTogether(const Data& requests, std::size_t count) {
  auto answers = send(requests) ? std::vector<Answer>() : receiveTogether(count);
  if (answers.size() < count) {
    socket_.reset();
  }
  return answers;
}

std::error_code DiagnosisSocket::open() {
  if (socket_) {
    return {};
  }
  room_.resize(kRoom);
  socket_.reset(mnl_socket_open2(NETLINK_SOCK_DIAG, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!socket_ || mnl_socket_bind(socket_.get(), 0, MNL_SOCKET_AUTOPID) < 0) {
    return lastError();
  }
  return {};
}

std::error_code DiagnosisSocket::send(const Data& requests) {
  if (const auto error = open()) {
    return error;
  }
  const auto size = mnl_socket_sendto(socket_.get(), requests.data(), requests.size());
  return size < 0 ? lastError() : std::error_code();
}

std::error_code DiagnosisSocket::receive(bool isList, std::vector<DiagnosedSocket>& found) {
  for (int reads = 0; reads < kMaxReads; ++reads) {
    const auto size = mnl_socket_recvfrom(socket_.get(), room_.data(), room_.size());
    if (size < 0) {
      return lastError();
    }
    const auto piece = DataView(room_).first(static_cast<std::size_t>(size));
    const auto [sockets, isComplete, error] = socket_diagnosis::read(piece, sequence_);
    found.insert(found.end(), sockets.begin(), sockets.end());
    if (isComplete || (!isList && !found.empty())) {
      return {error, std::generic_category()};
    }
  }
  return std::make_error_code(std::errc::message_size);
}

std::vector<Answer> DiagnosisSocket::receiveTogether(std::size_t count) {
  std::array<iovec, kMaxTogether> ranges;
  std::array<mmsghdr, kMaxTogether> messages{};
  for (std::size_t i = 0; i < count; ++i) {
    ranges[i] = {room_.data() + i * kRoomOfOne, kRoomOfOne};
    messages[i].msg_hdr.msg_iov = &ranges[i];
    messages[i].msg_hdr.msg_iovlen = 1;
  }
  const int received = ::recvmmsg(mnl_socket_get_fd(socket_.get()), messages.data(),
                                  static_cast<unsigned>(count), 0, nullptr);
  const auto first = sequence_ + 1 - static_cast<std::uint32_t>(count);
  std::vector<Answer> answers;
  for (std::size_t i = 0; static_cast<int>(i) < received; ++i) {
    const auto piece = DataView(room_).subspan(i * kRoomOfOne, messages[i].msg_len);
    auto answer = socket_diagnosis::read(piece, first + static_cast<std::uint32_t>(i));
    const bool isWhole = (messages[i].msg_hdr.msg_flags & MSG_TRUNC) == 0;
    if (!isWhole || (answer.error != ENOENT && answer.sockets.size() != 1)) {
      break;
    }
    answers.push_back(std::move(answer));
  }
  return answers;
}

}  // namespace platform
