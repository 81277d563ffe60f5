#include "DnsProxyExt/relay/XpcUdpHelper.h"

#include <utility>

#include "DnsProxyExt/relay/AppToExtDelegate.h"
#include "platform/base/Utf8.h"
#include "platform/log/NSLog.h"
#include "platform/log/StandardOutput.h"

namespace quillet {

using platform::Data;
using platform::NSLog;
using platform::NWConnection;
using platform::NWEndpoint;
using platform::NWError;
using CmdType = XpcUdpCommandParser::CmdType;

namespace {

constexpr char kLoopbackHost[] = "localhost";
constexpr std::string_view kReplyMarker = "&*";

}  // namespace

void XpcUdpHelper::printLogToFile(std::string_view log) { send(CmdType::printToLog, log); }

void XpcUdpHelper::proxyStateWasUpdated(std::string_view state) {
  send(CmdType::notification, state);
}

void XpcUdpHelper::send(CmdType cmdType, std::string_view payload) {
  if (!connection) {
    return;
  }
  if (auto datagram = XpcUdpCommandParser::encodeCommand(cmdType, payload)) {
    sendUDP(*std::move(datagram));
  }
}

void XpcUdpHelper::closeConnection() {
  if (connection) {
    connection->cancel();
  }
}

void XpcUdpHelper::connectToUDP(std::uint16_t port) { connectToUDP(nullptr, port, {}, {}); }

void XpcUdpHelper::connectToUDP(std::shared_ptr<DNSProxyToContentFilter> appToextDelegate,
                                std::optional<std::uint16_t> port,
                                std::optional<std::string> request, ResponseCallback respCallback) {
  appToExtDelegate = std::move(appToextDelegate);
  if (connection) {
    // A replaced association goes away without a word. It has to be told so: a connection that
    // nobody cancels keeps its socket for ever.
    connection->stateUpdateHandler = nullptr;
    connection->cancel();
  }
  connection = NWConnection::create(NWEndpoint::Host(kLoopbackHost),
                                    NWEndpoint::Port(port.value_or(relayPort)));
  connection->isLink = true;
  connection->stateUpdateHandler = [self = shared_from_this(), request = std::move(request),
                                    respCallback =
                                        std::move(respCallback)](const NWConnection::State& state) {
    self->stateChanged(state, request, respCallback);
  };
  connection->start(platform::DispatchQueue::global());
}

void XpcUdpHelper::stateChanged(const NWConnection::State& state,
                                const std::optional<std::string>& request,
                                const ResponseCallback& respCallback) {
  using Kind = NWConnection::State::Kind;
  platform::printLine("Xpc Udp This is stateUpdateHandler:");
  switch (state.kind) {
    case Kind::setup:
      NSLog("Xpc Udp State: Setup\n");
      break;
    case Kind::preparing:
      NSLog("Xpc Udp State: Preparing\n");
      break;
    case Kind::ready:
      NSLog("Xpc Udp State: Ready\n");
      receiveUDP(respCallback);
      if (request) {
        const auto bytes = platform::bytesOf(*request);
        sendUDP({bytes.begin(), bytes.end()});
      }
      break;
    case Kind::waiting:
      NSLog("Xpc Udp State: Waiting, error: ", *state.error);
      break;
    case Kind::failed:
      NSLog("Xpc Udp State: Failed,, failed: ", *state.error);
      break;
    case Kind::cancelled:
      NSLog("Xpc Udp State: Cancelled\n");
      break;
    default:
      NSLog("Xpc Udp ERROR! State not defined!\n");
  }
}

void XpcUdpHelper::sendUDP(Data bytes) {
  if (!connection) {
    return;
  }
  connection->send(std::move(bytes), [](const std::optional<NWError>& error) {
    if (error) {
      NSLog("Xpc Udp ERROR! Error when data (Type: Data) sending. NWError: \n ", *error);
    } else {
      NSLog("*Xpc Udp Data was sent to UDP*");
    }
  });
}

void XpcUdpHelper::receiveUDP(ResponseCallback respCallback) {
  if (!connection) {
    return;
  }
  connection->receiveMessage([self = shared_from_this(), respCallback = std::move(respCallback)](
                                 const std::optional<Data>& content, bool isComplete,
                                 const std::optional<NWError>& /*error*/) {
    self->received(content, isComplete, respCallback);
  });
}

void XpcUdpHelper::received(const std::optional<Data>& content, bool isComplete,
                            const ResponseCallback& respCallback) {
  if (!isComplete) {
    return;
  }
  NSLog("*Xpc Udp Receive is complete*");
  if (!content || content->empty()) {
    NSLog("Xpc Udp Data == nil");
    return;
  }
  const auto text = platform::repairedUtf8(platform::textOf(*content));
  NSLog("*Xpc Udp Received message: ", text);
  if (respCallback) {
    respCallback(text, std::nullopt);
  }
  closeConnection();
  if (!text.starts_with(kReplyMarker)) {
    obey(*content);
  }
}

void XpcUdpHelper::obey(platform::DataView datagram) {
  if (const auto command = XpcUdpCommandParser::decodeCommand(datagram)) {
    handle(*command);
  } else {
    NSLog("Xpc Udp Received message is no command, ", datagram.size(), " bytes");
  }
}

void XpcUdpHelper::handle(const XpcUdpCommand& msg) {
  if (msg.cmdType != CmdType::command) {
    NSLog("default");
    return;
  }
  if (const auto delegate = std::dynamic_pointer_cast<AppToExtDelegate>(appToExtDelegate)) {
    delegate->receivedCommandFromApp(msg);
  }
}

}  // namespace quillet
