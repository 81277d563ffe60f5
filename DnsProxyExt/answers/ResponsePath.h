#pragma once

#include <memory>
#include <optional>
#include <string>

#include "DnsProxyExt/intake/Batch.h"
#include "DnsProxyExt/intake/Decoding.h"
#include "DnsProxyExt/registry/DNSFlowReport.h"
#include "DnsProxyExt/registry/FlowManager.h"

namespace quillet {

/// Takes each answer: decodes it, logs what it took, writes it anew into its flow, and closes the
/// flow after the last one. Inside the event loop only.
class ResponsePath {
 public:
  ResponsePath(FlowManager& registry, DNSFlowReports& reports, Decoding decoding)
      : registry_(registry), reports_(reports), decoding_(std::move(decoding)) {}

  /// `owner` is whoever owns this; it is held until the answer is written.
  void take(Answer answer, std::shared_ptr<const void> owner);

 private:
  [[nodiscard]] std::optional<DNSFlowReport> endedReport(const std::string& key) const;
  void write(Answer answer, std::shared_ptr<const void> owner);
  void written(const Answer& answer, const std::optional<platform::Error>& writeError);

  FlowManager& registry_;
  DNSFlowReports& reports_;
  const Decoding decoding_;
};

}  // namespace quillet
