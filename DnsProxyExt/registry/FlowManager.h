#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>

#include "DnsProxyExt/registry/ManagedFlow.h"

namespace quillet {

/// The registry of flows. Inside the event loop only.
///
/// A record is kept after its flow was handled, so that a report can show it, but not for ever:
/// beyond the bounds below the finished records go first, the one finished longest ago before the
/// others, then the flows that were never answered, oldest first. A flow offered again after its
/// record went counts as new.
class FlowManager {
 public:
  using FlowKey = std::int64_t;

  /// Finished records kept. One costs about 2 KiB with a query of ordinary size.
  static constexpr std::size_t kMaxFinished = 1024;
  /// Records of flows in progress. One costs the same, and its flow object.
  static constexpr std::size_t kMaxUnfinished = 2048;
  /// Octets of queries and decoded queries held by all records together, whatever their number.
  static constexpr std::size_t kMaxCost = 32UL << 20;

  /// Registers a flow. True when it is registered already.
  bool addFlowIfNew(const std::shared_ptr<platform::NEAppProxyUDPFlow>& flow);

  void addErrorToFlow(const platform::NEAppProxyUDPFlow& flow, ErrorBreakpoint breakpoint);

  /// Marks a flow as finished. `error` is the upstream error as text, "nil" when there was none.
  void flowWasHandled(const platform::NEAppProxyUDPFlow& flow, std::string error);

  /// Keeps what was read from a flow: replaces its raw datagrams, appends its decoded ones.
  void addRequest(const platform::NEAppProxyUDPFlow& flow, std::vector<platform::Data> datagrams,
                  std::vector<std::optional<DnsToolsSocket::Message>> messages);

  /// Logs the flow-manager report.
  void printFlowReport(const ReportSettings& settings) const;

  /// The record of a flow, or nullptr.
  [[nodiscard]] ManagedFlow* find(const platform::NEAppProxyUDPFlow& flow) const;

  /// The records by flow key. Keys are running numbers, so this is the order of registration too.
  [[nodiscard]] const std::map<FlowKey, std::unique_ptr<ManagedFlow>>& flows() const {
    return flows_;
  }

 private:
  void dropBeyondBounds();
  void drop(std::map<FlowKey, std::unique_ptr<ManagedFlow>>::iterator record);

  std::map<FlowKey, std::unique_ptr<ManagedFlow>> flows_;
  std::deque<FlowKey> finished_;  // in the order in which they finished
  std::size_t cost_ = 0;          // the sum over flows_
};

}  // namespace quillet
