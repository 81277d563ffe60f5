#pragma once

#include <cstddef>
#include <cstdint>

#include "DnsProxyExt/registry/LineSink.h"
#include "DnsProxyExt/registry/ReportSettings.h"

namespace quillet {

class FlowManager;
class ManagedFlow;

/// The flow-manager report, which may be printed piece by piece: of the flows that are registered
/// when it begins, those that are there still when their piece is printed. Inside the event loop
/// only.
class FlowReport {
 public:
  /// Borrows the registry.
  FlowReport(const FlowManager& registry, ReportSettings settings);

  /// Prints on, and looks at `flows` more flows at most. False once the report is complete.
  bool print(std::size_t flows, const LineSink& sink);

 private:
  void printHead(const LineSink& sink) const;
  [[nodiscard]] bool isWanted(const ManagedFlow& record) const;

  const FlowManager* registry_;
  ReportSettings settings_;
  double start_;       // seconds since 1970
  std::int64_t next_;  // the flow key from which it goes on
  std::int64_t end_;   // the one before which it ends
  bool hasHead_ = false;
};

}  // namespace quillet
