#include "DnsProxyExt/upstream/PolicyUDPClient.h"

#include <limits>
#include <utility>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/log/NSLog.h"
#include "platform/network/NWPath.h"

namespace quillet {

using platform::Data;
using platform::NSLog;
using platform::NWConnection;
using platform::NWEndpoint;
using platform::NWError;

PolicyUDPClient::PolicyUDPClient(Data req) : PolicyUDPClient(std::move(req), "PolicyUDPClient") {}

PolicyUDPClient::PolicyUDPClient(Data req, std::string typeName)
    : request(std::move(req)), logTag(std::move(typeName)) {
  NSLog("init new ", logTag);
}

void PolicyUDPClient::connectWithUDP(const std::string& ip, std::int64_t serverPort) {
  host = ip;
  port = serverPort;
  if (port < 0 || port > std::numeric_limits<std::uint16_t>::max()) {
    NSLog(logTag, ": no such port: ", port);
    return;
  }
  connectToUDP(NWEndpoint::Host(host), NWEndpoint::Port(static_cast<std::uint16_t>(port)));
}

void PolicyUDPClient::connectToUDP(const NWEndpoint::Host& toHost, NWEndpoint::Port toPort) {
  NSLog(logTag, ": Connecting to  udp, flowHash ");
  connection = NWConnection::create(toHost, toPort);
  connection->stateUpdateHandler = [self = shared_from_this()](const NWConnection::State& state) {
    self->stateChanged(state);
  };
  connection->start(platform::DispatchQueue::global());
}

void PolicyUDPClient::stateChanged(const NWConnection::State& state) {
  using Kind = NWConnection::State::Kind;
  const auto endpoint = host + ":" + std::to_string(port);
  NSLog(logTag, " - stateUpdateHandler:,  state = ", state);
  switch (state.kind) {
    case Kind::setup:
      NSLog(logTag, " - State: Setup,", endpoint, " \n");
      break;
    case Kind::preparing:
      NSLog(logTag, "  -State: Preparing,", endpoint, " \n");
      break;
    case Kind::ready:
      NSLog(logTag, " - State: Ready,", endpoint, " \n");
      sendUDPDatagrams(request);
      break;
    case Kind::waiting:
      NSLog(logTag, " - State: Waiting,", endpoint, " error: ", *state.error);
      letGoLater();
      break;
    case Kind::failed:
      NSLog(logTag, "  -State: Failed,", endpoint, " failed: ", *state.error);
      letGoLater();
      break;
    case Kind::cancelled:
      NSLog(logTag, " - State: Cancelled,", endpoint, " \n");
      break;
    default:
      NSLog(logTag, " - ERROR! State not defined!,", endpoint, " \n");
  }
}

void PolicyUDPClient::sendUDPDatagrams(Data datagram) {
  NSLog(logTag, " sendUDP, req to  UDP  ");
  if (!connection) {
    return;
  }
  connection->send(std::move(datagram),
                   [self = shared_from_this(), info = connectionInfo()](
                       const std::optional<NWError>& error) { self->datagramSent(info, error); });
}

void PolicyUDPClient::datagramSent(const std::string& info, const std::optional<NWError>& error) {
  if (error) {
    NSLog(logTag, "  ERROR! Error when data (Type: Data) sending to  UDP.", info, " NWError: \n ",
          *error);
    letGo();
    return;
  }
  NSLog(logTag, " Data was sent to  UDP, ", info, ",");
  receiveUDP([self = shared_from_this(), info](std::optional<Data> content, bool isComplete,
                                               const std::optional<NWError>& failure) {
    self->received(info, std::move(content), isComplete, failure);
  });
}

void PolicyUDPClient::receiveUDP(NWConnection::ReceiveCompletion completion) {
  if (connection) {
    connection->receiveMessage(std::move(completion));
  }
}

void PolicyUDPClient::received(const std::string& info, std::optional<Data> content,
                               bool isComplete, const std::optional<NWError>& error) {
  NSLog(logTag, " receive  Udp callback called,", info, " , isComplete = ", isComplete);
  // A datagram of no bytes answers nothing: it counts as no content.
  if (content && content->empty()) {
    content.reset();
  }
  if (!isComplete || !content) {
    receivedNothing(info, std::move(content), error);
  } else {
    receivedAnswer(info, *std::move(content), error);
  }
}

void PolicyUDPClient::receivedNothing(const std::string& info, std::optional<Data> content,
                                      const std::optional<NWError>& error) {
  NSLog(logTag, " dns session is not completed,", info, " ");
  tell(std::move(content), false, error);
  if (error) {
    NSLog(logTag, " udp socket error: ", error, ",", info, " ");
    cancelConnection();
  } else {
    letGo();
  }
}

// One request is answered by one datagram, so the first one completes the exchange.
void PolicyUDPClient::receivedAnswer(const std::string& info, Data content,
                                     const std::optional<NWError>& error) {
  ++answerCount_;
  NSLog(logTag, " Udp received,", info, ", arr.count = ", answerCount_,
        ", content.count = ", request.size());
  tell(std::move(content), true, error);
  NSLog(" ", logTag, "self.connection?.cancel(), arr.count = ", answerCount_,
        ", content count = ", request.size(), ", ", info);
  cancelConnection();
}

/// Whoever took the answer may have taken the connection away.
void PolicyUDPClient::cancelConnection() {
  if (connection) {
    connection->cancel();
  }
}

/// Ends an exchange that is over without a word about it.
void PolicyUDPClient::letGo() {
  if (connection) {
    connection->stateUpdateHandler = nullptr;
    connection->cancel();
  }
}

/// From the state handler, which cannot be replaced while it runs.
void PolicyUDPClient::letGoLater() {
  platform::DispatchQueue::global().async([self = shared_from_this()] { self->letGo(); });
}

void PolicyUDPClient::tell(std::optional<Data> content, bool isComplete,
                           const std::optional<NWError>& error) const {
  if (onPolicyDataReceived) {
    onPolicyDataReceived(std::move(content), isComplete, error);
  }
}

std::string PolicyUDPClient::connectionInfo() const {
  std::optional<std::string> path;
  if (const auto current = connection->currentPath()) {
    path = platform::description(*current);
  }
  return platform::description(path) + ", to ip - " + host + ", port - " + std::to_string(port);
}

}  // namespace quillet
