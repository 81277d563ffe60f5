#include "dns_tools/DNSSocketClient.h"

#include <limits>
#include <map>
#include <string_view>
#include <utility>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/log/NSLog.h"

namespace DnsToolsSocket {

using platform::Data;
using platform::DispatchTime;
using platform::NSLog;
using platform::NSLogStep;
using platform::NWConnection;
using platform::NWEndpoint;
using platform::NWError;
using platform::NWHostEndpoint;

namespace {

/// For each datagram the index of the first one with equal bytes, whose endpoint serves all.
std::vector<std::size_t> firstOfEqual(const std::vector<Data>& batch) {
  std::map<std::string_view, std::size_t> firsts;
  std::vector<std::size_t> indices;
  indices.reserve(batch.size());
  for (std::size_t i = 0; i < batch.size(); ++i) {
    indices.push_back(firsts.emplace(platform::textOf(batch[i]), i).first->second);
  }
  return indices;
}

}  // namespace

std::shared_ptr<DNSSocketClient> DNSSocketClient::create(Flow flow,
                                                         std::vector<Data> inBoundDatagrams,
                                                         std::vector<NWHostEndpoint> endpoints) {
  return std::shared_ptr<DNSSocketClient>(
      new DNSSocketClient(std::move(flow), std::move(inBoundDatagrams), std::move(endpoints)));
}

DNSSocketClient::DNSSocketClient(Flow flow, std::vector<Data> inBoundDatagrams,
                                 std::vector<NWHostEndpoint> endpoints)
    : inBoundDatagrams_(std::move(inBoundDatagrams)),
      batchSize_(inBoundDatagrams_.size()),
      endpoints_(std::move(endpoints)),
      flow_(std::move(flow)),
      flowHash_(flow_->hash()),
      dataWasSent_(DispatchTime::now()) {
  NSLogStep("init new DNSSocketClient, flowHash = ", flowHash_);
}

void DNSSocketClient::connectWithDNS(const std::string& ip, std::int64_t port) {
  if (port < 0 || port > std::numeric_limits<std::uint16_t>::max()) {
    NSLog("DNSSocketClient, no such port: ", port, ", flowHash = ", flowHash_);
    return;
  }
  connectToUDP(NWEndpoint::Host(ip), NWEndpoint::Port(static_cast<std::uint16_t>(port)));
}

void DNSSocketClient::connectToUDP(const NWEndpoint::Host& host, NWEndpoint::Port port) {
  NSLogStep("Connecting to udp, flowHash = ", flowHash_);
  connection_ = NWConnection::create(host, port);
  connection_->stateUpdateHandler = [self = shared_from_this()](const NWConnection::State& state) {
    self->stateChanged(state);
  };
  connection_->start(platform::DispatchQueue::global());
}

void DNSSocketClient::stateChanged(const NWConnection::State& state) {
  using Kind = NWConnection::State::Kind;
  NSLogStep("DNSSocketClient stateUpdateHandler:, flowHash = ", flowHash_, ", state = ", state);
  switch (state.kind) {
    case Kind::setup:
      NSLogStep("State: Setup, flowHash = ", flowHash_, "\n");
      break;
    case Kind::preparing:
      NSLogStep("State: Preparing, flowHash = ", flowHash_, "\n");
      break;
    case Kind::ready:
      NSLogStep("State: Ready, flowHash = ", flowHash_, "\n");
      sendBatch();
      break;
    case Kind::waiting:
      NSLog("State: Waiting,flowHash = ", flowHash_, ", error: ", *state.error);
      letGoLater();
      break;
    case Kind::failed:
      NSLog("State: Failed,flowHash = ", flowHash_, ", failed: ", *state.error);
      letGoLater();
      break;
    case Kind::cancelled:
      NSLogStep("State: Cancelled, flowHash = ", flowHash_, "\n");
      break;
    default:
      NSLog("ERROR! State not defined!, flowHash = ", flowHash_, "\n");
  }
}

/// Later, since the state handler cannot be replaced while it runs.
void DNSSocketClient::letGoLater() {
  platform::DispatchQueue::global().async([self = shared_from_this()] {
    self->connection_->stateUpdateHandler = nullptr;
    self->connection_->cancel();
  });
}

void DNSSocketClient::sendBatch() {
  NSLogStep("sendUDP, content count = ", batchSize_, ", flowHash = ", flowHash_);
  answerCount_ = 0;
  const auto indices = firstOfEqual(inBoundDatagrams_);
  auto batch = std::exchange(inBoundDatagrams_, {});
  for (std::size_t i = 0; i < batch.size(); ++i) {
    connection_->send(std::move(batch[i]),
                      [self = shared_from_this(), index = indices[i]](
                          std::optional<NWError> error) { self->datagramSent(index, error); });
  }
}

void DNSSocketClient::datagramSent(std::size_t index, const std::optional<NWError>& error) {
  if (error) {
    NSLog("(", flowHash_, "): ERROR! Error when data (Type: Data) sending. NWError: \n ", *error);
    if (++failureCount_ == batchSize_) {
      letGoLater();
    }
    return;
  }
  NSLogStep("Data was sent to UDP, flowHash = ", flowHash_);
  dataWasSent_ = DispatchTime::now();
  connection_->receiveMessage([self = shared_from_this(), index](std::optional<Data> content,
                                                                 bool isComplete,
                                                                 std::optional<NWError> failure) {
    self->received(index, std::move(content), isComplete, failure);
  });
}

void DNSSocketClient::received(std::size_t index, std::optional<Data> content, bool isComplete,
                               const std::optional<NWError>& error) {
  NSLogStep("receiveUdp callback called, flowHash = ", flowHash_, ", isComplete = ", isComplete);
  const auto& endpoint = endpoints_[index];
  // A datagram of no bytes answers nothing: it counts as no content.
  if (content && content->empty()) {
    content.reset();
  }
  if (!isComplete || !content) {
    receivedNothing(endpoint, std::move(content), error);
  } else {
    receivedAnswer(endpoint, *std::move(content));
  }
}

void DNSSocketClient::receivedNothing(const NWHostEndpoint& endpoint, std::optional<Data> content,
                                      const std::optional<NWError>& error) {
  NSLogStep("dns session is not completed, flowHash = ", flowHash_);
  if (onDataReceived) {
    onDataReceived(flow_, std::move(content), endpoint, false, error);
  }
  if (error) {
    NSLogStep("udp socket error: ", *error, ", flowHash = ", flowHash_);
    connection_->cancel();
  }
}

void DNSSocketClient::receivedAnswer(const NWHostEndpoint& endpoint, Data content) {
  ++answerCount_;
  const bool isFinished = answerCount_ == batchSize_;
  NSLogStep("Udp received, flowHash = ", flowHash_, ", arr.count = ", answerCount_,
            ", content.count = ", batchSize_);
  if (onDataReceived) {
    onDataReceived(flow_, std::move(content), endpoint, isFinished, std::nullopt);
  }
  if (isFinished) {
    NSLogStep("self.connection?.cancel(), arr.count = ", answerCount_,
              ", content count = ", batchSize_, ", flowHash = ", flowHash_);
    connection_->cancel();
  }
}

}  // namespace DnsToolsSocket
