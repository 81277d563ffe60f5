#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "DnsProxyExt/intake/Batch.h"
#include "DnsProxyExt/intake/Decoding.h"
#include "DnsProxyExt/registry/FlowManager.h"
#include "DnsProxyExt/relay/RelayLog.h"

namespace quillet {

/// Takes what a flow gives: keeps it in the registry, obeys the report command, and says what is to
/// be routed. Neither opens nor reads a flow. Inside the event loop only.
class FlowIntake {
 public:
  using Flow = std::shared_ptr<platform::NEAppProxyUDPFlow>;
  /// Prints the provider's part of a report.
  using PrintSettings = std::function<void()>;

  FlowIntake(FlowManager& registry, RelayLog relayLog)
      : registry_(registry), relayLog_(std::move(relayLog)) {}

  /// Takes the outcome of opening a flow, which is read in any case.
  void opened(const Flow& flow, const std::optional<platform::Error>& error);

  /// Takes the outcome of one read; absent when nothing is to be routed. Calls `printSettings`
  /// when the first query asks for a report.
  std::optional<Batch> read(const Flow& flow, std::optional<std::vector<platform::Data>> datagrams,
                            std::optional<std::vector<platform::NWHostEndpoint>> endpoints,
                            const std::optional<platform::Error>& error,
                            const PrintSettings& printSettings);

 private:
  bool isReadable(const Flow& flow, const std::optional<std::vector<platform::Data>>& datagrams,
                  const std::optional<platform::Error>& error);
  void record(const Batch& batch);
  void obeyReportCommand(const Batch& batch, const PrintSettings& printSettings) const;

  FlowManager& registry_;
  const RelayLog relayLog_;
};

}  // namespace quillet
