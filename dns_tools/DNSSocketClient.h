#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/Clock.h"
#include "platform/base/Data.h"
#include "platform/network/NWConnection.h"
#include "platform/networkextension/NEAppProxyUDPFlow.h"

namespace DnsToolsSocket {

/// Carries one batch of query datagrams of one flow to one DNS server over a UDP connection of its
/// own and hands every answer to its owner. Knows nothing of what the datagrams hold.
///
/// Answers are matched to the receives in the order in which they arrive, not by message id. There
/// is no time limit and no retry; a batch that is not answered in full is never reported as
/// finished. A connection that waits or failed has no socket and never gets one: it is let go of
/// without a further word, as is one that none of the batch could be sent on. Datagrams are held
/// until they are sent, not until they are answered.
///
/// Used once: create, set `onDataReceived`, connect. From then on the connection's handlers keep
/// the client alive until the connection is cancelled. Inside the event loop only.
class DNSSocketClient : public std::enable_shared_from_this<DNSSocketClient> {
 public:
  using Flow = std::shared_ptr<platform::NEAppProxyUDPFlow>;

  /// Called once for each answer. `endpoint` is the flow's endpoint of the datagram answered;
  /// `isFinished` is true when this answer completes the batch. Endpoint and flag are always
  /// present.
  using DataReceived =
      std::function<void(const Flow& flow, std::optional<platform::Data> answer,
                         std::optional<platform::NWHostEndpoint> endpoint,
                         std::optional<bool> isFinished, std::optional<platform::NWError> error)>;

  /// There are at least as many endpoints as datagrams; entry i belongs to datagram i.
  static std::shared_ptr<DNSSocketClient> create(Flow flow,
                                                 std::vector<platform::Data> inBoundDatagrams,
                                                 std::vector<platform::NWHostEndpoint> endpoints);

  DNSSocketClient(const DNSSocketClient&) = delete;
  DNSSocketClient& operator=(const DNSSocketClient&) = delete;
  ~DNSSocketClient() = default;

  /// Connects to the server and sends the batch as soon as the connection is ready. A port outside
  /// 0 to 65535 is one log line and no connection.
  void connectWithDNS(const std::string& ip, std::int64_t port);

  DataReceived onDataReceived;

  /// When the client was made, and then when a datagram last went out.
  [[nodiscard]] platform::DispatchTime dataWasSent() const { return dataWasSent_; }
  /// Absent until `connectWithDNS`.
  [[nodiscard]] const std::shared_ptr<platform::NWConnection>& connection() const {
    return connection_;
  }

 private:
  DNSSocketClient(Flow flow, std::vector<platform::Data> inBoundDatagrams,
                  std::vector<platform::NWHostEndpoint> endpoints);

  void connectToUDP(const platform::NWEndpoint::Host& host, platform::NWEndpoint::Port port);
  void stateChanged(const platform::NWConnection::State& state);
  void letGoLater();
  void sendBatch();
  // `index` is that of the endpoint that the answer belongs to.
  void datagramSent(std::size_t index, const std::optional<platform::NWError>& error);
  void received(std::size_t index, std::optional<platform::Data> content, bool isComplete,
                const std::optional<platform::NWError>& error);
  void receivedNothing(const platform::NWHostEndpoint& endpoint,
                       std::optional<platform::Data> content,
                       const std::optional<platform::NWError>& error);
  void receivedAnswer(const platform::NWHostEndpoint& endpoint, platform::Data content);

  std::vector<platform::Data> inBoundDatagrams_;  // none once they are given to the connection
  const std::size_t batchSize_;
  const std::vector<platform::NWHostEndpoint> endpoints_;
  const Flow flow_;
  const std::int64_t flowHash_;
  platform::DispatchTime dataWasSent_;
  std::shared_ptr<platform::NWConnection> connection_;
  std::size_t answerCount_ = 0;
  std::size_t failureCount_ = 0;  // datagrams that could not be sent
};

}  // namespace DnsToolsSocket
