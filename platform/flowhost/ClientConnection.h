#pragma once

#include <functional>
#include <list>
#include <memory>

#include "platform/flowhost/AnswerPath.h"
#include "platform/flowhost/ClientDatagrams.h"
#include "platform/tcp/MessageStream.h"

namespace platform {

/// Queries by TCP that are outstanding, of all clients. Each has an exchange upstream, of which
/// there may be so many that others are given up for them.
struct OutstandingQueries {
  const std::size_t limit;
  std::size_t count = 0;
};

/// One client by TCP: its queries, each a flow of its own, and their answers, in the order in which
/// they come (RFC 7766, section 6.2.1). Inside the event loop only.
///
/// A query is outstanding until it has an answer, its flow is closed or let go of without one, or
/// nobody can expect one any more.
/// While as many as may be are outstanding, or answers wait for a slow reader, nothing is read: the
/// kernel makes the client wait. When all clients together have reached their limit, each may have
/// one at a time. A client that has ended its side is still sent what it waits for.
/// A message of no octets ends the connection.
class ClientConnection final : public std::enable_shared_from_this<ClientConnection>,
                               public MessageStream::Owner {
 public:
  /// Queries outstanding. One costs what a flow costs, some 2 KiB, and its exchange upstream.
  static constexpr std::size_t kMaxOutstanding = 128;
  /// Octets of answers that wait for a slow reader, beside what the kernel holds; with more the
  /// connection is closed.
  static constexpr std::size_t kMaxWaiting = 512UL * 1024;
  /// How long a client may send no whole query and take no answer while no query is outstanding.
  static constexpr double kIdleSeconds = 10;
  /// How long a query is outstanding at most; clients give up long before. An exchange upstream has
  /// no timeout.
  static constexpr double kPatienceSeconds = 120;

  /// Offers a query; the flow made of it keeps the path.
  using Offer = std::function<void(std::shared_ptr<AnswerPath>, ClientDatagrams)>;

  /// `origin` is what each query comes with, without datagrams; `all` belongs to all clients.
  ClientConnection(ClientDatagrams origin, Offer offer, std::shared_ptr<OutstandingQueries> all);

  void begin(FileDescriptor socket);
  /// What waits fails with ECANCELED.
  void close() { stream_.close(); }
  [[nodiscard]] bool isOpen() const { return stream_.isOpen(); }

  [[nodiscard]] std::uint64_t lastActivity() const { return stream_.lastActivity(); }
  /// Ends waiting for what has been outstanding for too long, and the connection when it has been
  /// idle for too long. Gives the seconds after which that is to be looked at again, at most
  /// `kIdleSeconds`.
  double checkTime();

 private:
  class Query;

  void streamChanged() override;
  void offerQueries();
  [[nodiscard]] bool hasRoom() const;
  void answer(DataView message, const std::shared_ptr<PendingWrite>& write);
  void queryIsOver(std::list<Query*>::iterator place);

  const ClientDatagrams origin_;
  const Offer offer_;
  const std::shared_ptr<OutstandingQueries> all_;
  MessageStream stream_;
  std::list<Query*> outstanding_;  // the oldest first
};

}  // namespace platform
