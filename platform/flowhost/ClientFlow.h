#pragma once

#include "platform/flowhost/AnswerPath.h"
#include "platform/flowhost/ClientDatagrams.h"
#include "platform/flowhost/FlowObserver.h"
#include "platform/networkextension/NEAppProxyUDPFlow.h"

namespace platform {

/// The flow of what one client socket has sent in one read, or of one query by TCP. Costs the host
/// nothing once it is offered: only who holds it keeps it.
class ClientFlow final : public NEAppProxyUDPFlow {
 public:
  ClientFlow(std::shared_ptr<AnswerPath> answers, ClientDatagrams received,
             std::shared_ptr<const NEFlowMetaData> metaData);

  /// Tells `activity`, when there is one, of its offer and its answers. Does not keep it: the flow
  /// may be known of long after all that could come of it has come.
  void observe(const std::shared_ptr<FlowActivity>& activity);

  void openWithLocalEndpoint(std::optional<NWHostEndpoint> localEndpoint,
                             OpenCompletion completion) override;
  /// The datagrams at the first call, none later; an error after closing.
  void readDatagrams(ReadCompletion completion) override;
  /// An error too, and nothing is sent, unless each endpoint is the destination of the queries.
  /// The completion runs when the kernel has taken all datagrams; it carries the first error.
  void writeDatagrams(std::vector<Data> datagrams, std::vector<NWHostEndpoint> sentByEndpoints,
                      WriteCompletion completion) override;
  void closeReadWithError(std::optional<Error> error) override;
  void closeWriteWithError(std::optional<Error> error) override;

  [[nodiscard]] const NEFlowMetaData& metaData() const override { return *metaData_; }
  [[nodiscard]] std::int64_t hash() const override { return hash_; }
  [[nodiscard]] bool isBound() const override { return false; }
  [[nodiscard]] std::optional<std::string> networkInterface() const override {
    return std::nullopt;
  }
  [[nodiscard]] std::optional<NWHostEndpoint> localEndpoint() const override;
  [[nodiscard]] std::optional<std::string> remoteHostname() const override;
  /// `<NEAppProxyUDPFlow: 12, 127.0.0.1:40000 -> 127.0.0.1:5300, 1 datagrams>`
  [[nodiscard]] std::string debugDescription() const override;

  /// The destination of the queries.
  [[nodiscard]] const NWHostEndpoint& remoteEndpoint() const { return remoteEndpoint_; }

 private:
  [[nodiscard]] std::optional<Error> objection(
      const std::vector<Data>& datagrams, const std::vector<NWHostEndpoint>& sentByEndpoints) const;
  void releaseWhenClosed();
  WriteCompletion observed(const std::vector<Data>& answers, WriteCompletion completion) const;

  std::shared_ptr<AnswerPath> answers_;  // absent once released
  const DatagramPath path_;
  const NWHostEndpoint remoteEndpoint_;
  std::vector<Data> datagrams_;
  const std::size_t datagramCount_;
  const std::shared_ptr<const NEFlowMetaData> metaData_;
  const std::int64_t hash_;
  std::weak_ptr<FlowActivity> activity_;
  bool isReadClosed_ = false;
  bool isWriteClosed_ = false;
};

}  // namespace platform
