#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <span>
#include <vector>

#include "DnsProxyExt/routing/Route.h"
#include "platform/flowhost/FlowObserver.h"
#include "queries/QueryOutcome.h"

namespace quillet {

/// Knows each query from its arrival until it is answered or given up, and tells of it then,
/// exactly once: its observers, and the log when it began in brief mode.
///
/// What it holds is bounded by the flows that live: those that wait for their application
/// (`SenderLookup`), exchanges upstream (`NWConnection::kMaxConnections`) and streams to the
/// system's server (`SystemResolver::kMaxStreams`), answers that wait to be sent. A query costs
/// some 200 octets and its name. Inside the event loop only.
class QueryLedger final : public platform::FlowObserver,
                          public std::enable_shared_from_this<QueryLedger> {
 public:
  using Observer = std::function<void(const QueryOutcome&)>;

  /// From now on `observer` is told of each query that is over. It may look at the ledger, and does
  /// not change it.
  void observe(Observer observer) { observers_.push_back(std::move(observer)); }

  /// Queries that are neither answered nor given up; datagrams without a question that can be read
  /// are none.
  [[nodiscard]] std::size_t open() const { return open_; }

  /// The provider has chosen where the queries of the current activity go.
  static void routed(const Route& route);

  /// Gives up all that are open; for the end of the process.
  void giveUpAll();

  std::shared_ptr<platform::FlowActivity> began(platform::Transport transport,
                                                std::span<const platform::Data> queries) override;

 private:
  class Flow;

  void tell(const QueryOutcome& outcome, platform::LogMode mode) const;

  std::vector<Observer> observers_;
  std::list<Flow*> flows_;
  std::size_t open_ = 0;
};

}  // namespace quillet
