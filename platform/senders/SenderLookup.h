#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/senders/CgroupTree.h"
#include "platform/senders/ProcessSearch.h"
#include "platform/senders/SocketTable.h"
#include "platform/udp/ReceivedDatagram.h"

namespace platform {

/// Whose application is to be known.
struct SenderQuery {
  SocketPath path;
  /// Between which ends it was sent, when it was redirected here and that is known.
  std::optional<DatagramPath> original;
  /// Whether it may have been redirected without that being known.
  bool mayBeRedirected = false;
};

/// The system's knowledge of who sent something: the client's socket, the cgroup in which that was
/// made, and the application that the cgroup stands for. Inside the event loop only, on which
/// nothing waits: what takes its time is done on other threads, and who asks for it waits a tenth
/// of a second at most for each.
class SenderLookup : public std::enable_shared_from_this<SenderLookup> {
 public:
  /// How far it looks.
  enum class Depth {
    cgroup,
    /// Where the cgroup does not tell, the program that holds the socket.
    process,
  };
  /// Those whose socket is looked for by its port at a time. One holds a flow with its datagrams.
  static constexpr std::size_t kMaxSearches = 256;
  /// For such a search with those before it, seconds.
  static constexpr double kMaxWait = 0.1;

  /// The signing identifier, valid during the call only; absent when it is not known.
  using Completion = std::function<void(std::optional<std::string_view> application)>;

  /// The socket that has sent; absent when it is not known.
  using Owner = std::optional<SocketOwner>;

  static std::shared_ptr<SenderLookup> start(Depth depth);

  /// One for each of `queries`, which came at the same time.
  std::vector<Owner> find(std::span<const SenderQuery> queries);
  /// Completes once; during the call when nothing takes its time. `owner` is what `find` gives.
  void identify(const SenderQuery& query, const Owner& owner, Completion completion);
  void identify(const SenderQuery& query, Completion completion) {
    identify(query, find({&query, 1}).front(), std::move(completion));
  }

 private:
  explicit SenderLookup(Depth depth);

  void searchByPort(const SocketAddress& client, Completion completion);
  void nameOwner(const std::optional<SocketOwner>& owner, Completion completion);
  void nameProgram(const SocketOwner& owner, const Cgroup* cgroup, const Completion& completion);

  using Search = TimedCompletion<std::optional<SocketOwner>>;

  SocketTable table_;
  const std::shared_ptr<CgroupTree> cgroups_;
  const std::shared_ptr<ProcessSearch> processes_;  // absent unless it looks that far
  const std::shared_ptr<SocketTable> searched_ = std::make_shared<SocketTable>();  // on its queue
  std::optional<DispatchQueue> queue_;  // from the first search on
  std::size_t searches_ = 0;
};

}  // namespace platform
