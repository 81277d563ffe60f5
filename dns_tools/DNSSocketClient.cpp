#include "dns_tools/DNSSocketClient.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "platform/foundation/NSLog.h"

namespace DnsToolsSocket {

using platform::Data;
using platform::DispatchTime;
using platform::NSLog;
using platform::NWConnection;
using platform::NWEndpoint;
using platform::NWError;
using platform::NWHostEndpoint;

std::shared_ptr<DNSSocketClient> DNSSocketClient::create(Flow flow,
                                                         std::vector<Data> inBoundDatagrams,
                                                         std::vector<NWHostEndpoint> endpoints) {
  return std::shared_ptr<DNSSocketClient>(
      new DNSSocketClient(std::move(flow), std::move(inBoundDatagrams), std::move(endpoints)));
}

DNSSocketClient::DNSSocketClient(Flow flow, std::vector<Data> inBoundDatagrams,
                                 std::vector<NWHostEndpoint> endpoints)
    : inBoundDatagrams_(std::move(inBoundDatagrams)),
      endpoints_(std::move(endpoints)),
      flow_(std::move(flow)),
      flowHash_(flow_->hash()),
      dataWasSent_(DispatchTime::now()) {
  NSLog("init new DNSSocketClient, flowHash = ", flowHash_);
}

void DNSSocketClient::connectWithDNS(const std::string& ip, std::int64_t port) {
  if (port < 0 || port > std::numeric_limits<std::uint16_t>::max()) {
    NSLog("DNSSocketClient, no such port: ", port, ", flowHash = ", flowHash_);
    return;
  }
  connectToUDP(NWEndpoint::Host(ip), NWEndpoint::Port(static_cast<std::uint16_t>(port)));
}

void DNSSocketClient::connectToUDP(const NWEndpoint::Host& host, NWEndpoint::Port port) {
  NSLog("Connecting to udp, flowHash = ", flowHash_);
  connection_ = NWConnection::create(host, port);
  connection_->stateUpdateHandler = [self = shared_from_this()](const NWConnection::State& state) {
    self->stateChanged(state);
  };
  connection_->start(platform::DispatchQueue::global());
}

void DNSSocketClient::stateChanged(const NWConnection::State& state) {
  using Kind = NWConnection::State::Kind;
  NSLog("DNSSocketClient stateUpdateHandler:, flowHash = ", flowHash_, ", state = ", state);
  switch (state.kind) {
    case Kind::setup:
      NSLog("State: Setup, flowHash = ", flowHash_, "\n");
      break;
    case Kind::preparing:
      NSLog("State: Preparing, flowHash = ", flowHash_, "\n");
      break;
    case Kind::ready:
      NSLog("State: Ready, flowHash = ", flowHash_, "\n");
      sendBatch();
      break;
    case Kind::waiting:
      NSLog("State: Waiting,flowHash = ", flowHash_, ", error: ", *state.error);
      break;
    case Kind::failed:
      NSLog("State: Failed,flowHash = ", flowHash_, ", failed: ", *state.error);
      break;
    case Kind::cancelled:
      NSLog("State: Cancelled, flowHash = ", flowHash_, "\n");
      break;
    default:
      NSLog("ERROR! State not defined!, flowHash = ", flowHash_, "\n");
  }
}

void DNSSocketClient::sendBatch() {
  NSLog("sendUDP, content count = ", inBoundDatagrams_.size(), ", flowHash = ", flowHash_);
  answerCount_ = 0;
  for (std::size_t index = 0; index < inBoundDatagrams_.size(); ++index) {
    connection_->send(inBoundDatagrams_[index],
                      [self = shared_from_this(), index](std::optional<NWError> error) {
                        self->datagramSent(index, error);
                      });
  }
}

void DNSSocketClient::datagramSent(std::size_t index, const std::optional<NWError>& error) {
  if (error) {
    NSLog("(", flowHash_, "): ERROR! Error when data (Type: Data) sending. NWError: \n ", *error);
    return;
  }
  NSLog("Data was sent to UDP, flowHash = ", flowHash_);
  dataWasSent_ = DispatchTime::now();
  connection_->receiveMessage([self = shared_from_this(), index](std::optional<Data> content,
                                                                 bool isComplete,
                                                                 std::optional<NWError> failure) {
    self->received(index, std::move(content), isComplete, failure);
  });
}

void DNSSocketClient::received(std::size_t index, std::optional<Data> content, bool isComplete,
                               const std::optional<NWError>& error) {
  NSLog("receiveUdp callback called, flowHash = ", flowHash_, ", isComplete = ", isComplete);
  const auto& endpoint = endpointOf(index);
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
  NSLog("dns session is not completed, flowHash = ", flowHash_);
  if (onDataReceived) {
    onDataReceived(flow_, std::move(content), endpoint, false, error);
  }
  if (error) {
    NSLog("udp socket error: ", *error, ", flowHash = ", flowHash_);
    connection_->cancel();
  }
}

void DNSSocketClient::receivedAnswer(const NWHostEndpoint& endpoint, Data content) {
  ++answerCount_;
  const auto batchSize = inBoundDatagrams_.size();
  const bool isFinished = answerCount_ == batchSize;
  NSLog("Udp received, flowHash = ", flowHash_, ", arr.count = ", answerCount_,
        ", content.count = ", batchSize);
  if (onDataReceived) {
    onDataReceived(flow_, std::move(content), endpoint, isFinished, std::nullopt);
  }
  if (isFinished) {
    NSLog("self.connection?.cancel(), arr.count = ", answerCount_, ", content count = ", batchSize,
          ", flowHash = ", flowHash_);
    connection_->cancel();
  }
}

/// Of datagrams with equal bytes, the first one's endpoint serves all.
const NWHostEndpoint& DNSSocketClient::endpointOf(std::size_t index) const {
  const auto first =
      std::find(inBoundDatagrams_.begin(), inBoundDatagrams_.end(), inBoundDatagrams_[index]);
  return endpoints_[static_cast<std::size_t>(first - inBoundDatagrams_.begin())];
}

}  // namespace DnsToolsSocket
