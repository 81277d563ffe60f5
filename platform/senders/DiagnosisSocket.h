#pragma once

#include <libmnl/libmnl.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <system_error>
#include <tl/expected.hpp>
#include <vector>

#include "platform/base/Data.h"
#include "platform/senders/SocketDiagnosis.h"

namespace platform {

/// The netlink socket over which `sock_diag` is asked. The kernel has answered when it has taken a
/// request, so nothing here waits. It is opened when it is needed, and again after an error: what
/// is still to come on the former one belongs to nobody.
class DiagnosisSocket {
 public:
  /// An exact answer has some 200 octets; the kernel fills no more than `kRoom` at a time.
  static constexpr std::size_t kRoom = 32UL * 1024;
  static constexpr std::size_t kRoomOfOne = 512;
  static constexpr std::size_t kMaxTogether = kRoom / kRoomOfOne;

  /// The number of the request that is made next; its answer brings it back.
  std::uint32_t nextSequence() { return ++sequence_; }

  /// Sends the request of the last number, and gives the sockets of its answer: all of a list, or
  /// the one of an exact request.
  tl::expected<std::vector<DiagnosedSocket>, std::error_code> ask(const Data& request, bool isList);

  /// Sends exact requests, `count` with the last numbers, `kMaxTogether` at most, one after the
  /// other in `requests`. Gives the answers up to the first that is not to be read.
  std::vector<socket_diagnosis::Answer> askTogether(const Data& requests, std::size_t count);

 private:
  struct Close {
    void operator()(mnl_socket* socket) const { mnl_socket_close(socket); }
  };

  std::error_code open();
  std::error_code send(const Data& requests);
  std::error_code receive(bool isList, std::vector<DiagnosedSocket>& found);
  std::vector<socket_diagnosis::Answer> receiveTogether(std::size_t count);

  std::unique_ptr<mnl_socket, Close> socket_;  // absent after an error
  Data room_;
  std::uint32_t sequence_ = 0;
};

}  // namespace platform
