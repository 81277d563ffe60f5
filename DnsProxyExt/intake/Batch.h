#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/Error.h"
#include "platform/networkextension/NEAppProxyUDPFlow.h"

namespace quillet {

/// The queries that one read of a flow has brought, on their way to a server.
struct Batch {
  /// What is absent counts as none.
  static Batch from(std::shared_ptr<platform::NEAppProxyUDPFlow> flow,
                    std::optional<std::vector<platform::Data>> datagrams,
                    std::optional<std::vector<platform::NWHostEndpoint>> endpoints) {
    return {std::move(flow), std::move(datagrams).value_or(std::vector<platform::Data>()),
            std::move(endpoints).value_or(std::vector<platform::NWHostEndpoint>())};
  }

  [[nodiscard]] std::int64_t hash() const { return flow->hash(); }
  /// The application's signing identifier.
  [[nodiscard]] const std::string& application() const {
    return flow->metaData().sourceAppSigningIdentifier;
  }
  /// Whether there is something to send, and somebody to answer for each of it.
  [[nodiscard]] bool isComplete() const {
    return !datagrams.empty() && endpoints.size() >= datagrams.size();
  }

  std::shared_ptr<platform::NEAppProxyUDPFlow> flow;
  std::vector<platform::Data> datagrams;
  /// Endpoint i is the one that datagram i was sent to.
  std::vector<platform::NWHostEndpoint> endpoints;
};

/// What a server said to one datagram of a batch.
struct Answer {
  [[nodiscard]] std::int64_t hash() const { return flow->hash(); }

  std::shared_ptr<platform::NEAppProxyUDPFlow> flow;
  /// Absent when there was none.
  std::optional<platform::Data> datagram;
  /// Whether it completes the batch.
  bool isFinished = false;
  /// The one that the datagram was sent to.
  platform::NWHostEndpoint endpoint;
  std::optional<platform::Error> error;
};

}  // namespace quillet
