#include "relay_service/UDPListener.h"

#include <utility>

#include "platform/base/RemoveOccurrences.h"
#include "platform/base/Utf8.h"
#include "platform/log/NSLog.h"
#include "platform/process/NSTask.h"

namespace QuilletXPCservice {

using platform::Data;
using platform::DataView;
using platform::NSLog;
using platform::NSLogStep;
using platform::NWConnection;
using platform::NWError;
using platform::NWListener;
using quillet::XpcUdpCommandParser;

namespace {

constexpr std::string_view kAgentLog = "&*AL";
constexpr std::string_view kRequestUser = "&*requestCU";
constexpr std::string_view kUpdateUser = "&*updateCU";

}  // namespace

void UDPListener::start(std::uint16_t port) {
  auto parameters = platform::NWParameters::udp();
  parameters.allowFastOpen = true;
  auto opened = NWListener::create(parameters, platform::NWEndpoint::Port(port));
  if (!opened) {
    return;
  }
  listener = *std::move(opened);
  listener->stateUpdateHandler = [weak = weak_from_this(), port](const NWListener::State& state) {
    if (const auto self = weak.lock()) {
      self->listenerChanged(state, port);
    }
  };
  listener->newConnectionHandler = [weak = weak_from_this()](std::shared_ptr<NWConnection> fresh) {
    if (const auto self = weak.lock()) {
      NSLogStep("Listener receiving new message");
      self->acceptConnection(std::move(fresh));
    }
  };
  listener->start(queue);
}

void UDPListener::listenerChanged(const NWListener::State& state, std::uint16_t port) {
  using Kind = NWListener::State::Kind;
  switch (state.kind) {
    case Kind::ready:
      isReady = true;
      NSLogStep("Listener connected to port ", port);
      break;
    case Kind::failed:
    case Kind::cancelled:
      listening = false;
      isReady = false;
      NSLog("Listener disconnected from port ", port);
      break;
    default:
      NSLogStep("Listener connecting to port ", port, "...");
  }
}

void UDPListener::acceptConnection(std::shared_ptr<NWConnection> newConnection) {
  clearDNSCache();
  connection = std::move(newConnection);
  connection->stateUpdateHandler = [weak = weak_from_this(), changed = WeakConnection(connection)](
                                       const NWConnection::State& state) {
    const auto self = weak.lock();
    const auto one = changed.lock();
    if (self && one) {
      self->connectionChanged(state, *one);
    }
  };
  connection->start(queue);
}

void UDPListener::connectionChanged(const NWConnection::State& state, const NWConnection& changed) {
  using Kind = NWConnection::State::Kind;
  switch (state.kind) {
    case Kind::ready:
      NSLogStep("Listener ready to receive message - ", changed);
      receive();
      break;
    case Kind::failed:
    case Kind::cancelled:
      NSLog("Listener failed to receive message - ", changed);
      close();
      break;
    default:
      NSLogStep("Listener waiting to receive message - ", changed);
  }
}

void UDPListener::close() {
  if (listener) {
    listener->cancel();
  }
  listening = false;
}

void UDPListener::receive() {
  if (!connection) {
    return;
  }
  connection->receiveMessage(
      [weak = weak_from_this(), from = WeakConnection(connection)](
          std::optional<Data> content, bool isComplete, const std::optional<NWError>& error) {
        if (const auto self = weak.lock()) {
          self->received(from, std::move(content), isComplete, error);
        }
      });
}

void UDPListener::received(const WeakConnection& from, std::optional<Data> content, bool isComplete,
                           const std::optional<NWError>& error) {
  if (error) {
    NSLog("Error: NWError received in receive() - ", *error);
    letGo(from);
    return;
  }
  if (!isComplete || !content || content->empty()) {
    NSLog("Error: Received nil Data with context - ", std::nullopt);
    letGo(from);
    return;
  }
  messageReceived = std::move(content);
  act(**messageReceived);
  if (*listening) {
    receive();
  }
}

/// Nothing would be received from it any more: when its client sends again, that is a new
/// association, and no datagram is lost without a line.
void UDPListener::letGo(const WeakConnection& from) {
  if (connection == from.lock()) {
    connection.reset();
  }
}

/// A marker's characters are code points: a combining mark after it belongs to the text.
void UDPListener::act(DataView datagram) {
  const auto text = platform::repairedUtf8(platform::textOf(datagram));
  if (text.starts_with(kAgentLog)) {
    NSLog("Agent log: ", platform::removingOccurrences(text, kAgentLog));
  } else if (text.starts_with(kRequestUser)) {
    NSLog("request CU received, cu: ", xpcUser);
    sendUser();
  } else if (text.starts_with(kUpdateUser)) {
    updateUser(text);
  } else if (const auto cmd = XpcUdpCommandParser::decodeCommand(datagram)) {
    handleCommand(*cmd);
  } else {
    NSLog("Received message is no command, ", datagram);
  }
}

void UDPListener::sendUser() {
  if (!connection) {
    return;
  }
  const auto bytes = platform::bytesOf(xpcUser);
  connection->send({bytes.begin(), bytes.end()}, [](const std::optional<NWError>& error) {
    if (error) {
      NSLog("ERROR! Error when data (Type: Data) sending. NWError: \n ", *error);
    } else {
      NSLogStep("Data was sent to UDP");
    }
  });
}

void UDPListener::updateUser(std::string_view text) {
  NSLog("update CU received, message: ", text);
  xpcUser = platform::removingOccurrences(text, kUpdateUser);
  NSLog(" CU updated: ", xpcUser);
}

void UDPListener::handleCommand(const quillet::XpcUdpCommand& cmd) {
  using CmdType = XpcUdpCommandParser::CmdType;
  switch (cmd.cmdType) {
    case CmdType::printToLog:
      NSLog("got printToLog from Ext: ", cmd.payload);
      break;
    case CmdType::command:
      NSLog("got command from Ext: ", cmd.payload);
      break;
    case CmdType::notification:
      NSLog("got notification from Ext: ", cmd.payload);
      proxyStatus = cmd.payload;
      break;
  }
}

void UDPListener::clearDNSCache() {
  if (!flush_.command.empty()) {
    const auto output = runShellCommand(flush_.command);
    NSLogStep("clearDNSCacheCmd result - ", output);
  }
}

std::string UDPListener::runShellCommand(const std::string& command) {
  platform::NSTask task;
  task.executablePath = flush_.shell;
  task.arguments = {"-c", command};
  task.standardOutput = std::make_shared<platform::NSPipe>();
  task.standardError = task.standardOutput;
  if (const auto error = task.run()) {
    return error->text();
  }
  const auto output = task.standardOutput->readDataToEndOfFile();
  return platform::repairedUtf8(platform::textOf(output));
}

}  // namespace QuilletXPCservice
