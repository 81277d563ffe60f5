#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "DnsProxyExt/relay/DNSProxyToContentFilter.h"
#include "DnsProxyExt/relay/XpcUdpCommandParser.h"
#include "platform/base/Data.h"
#include "platform/base/Error.h"
#include "platform/network/NWConnection.h"

namespace quillet {

/// The provider's end of the local command channel: one UDP association to the relay service on
/// this machine. Log lines and states go out on it as command datagrams; at most one datagram comes
/// back for each connect, a reply text or a command.
///
/// Nothing is waited for and nothing retried: without a relay service a send is one datagram that
/// is lost and one log line; one that comes later hears what is sent then. Unconnected, it drops
/// what it is to send.
///
/// Owned by a shared_ptr, which its connection's handlers hold. Inside the event loop only.
class XpcUdpHelper : public std::enable_shared_from_this<XpcUdpHelper> {
 public:
  static constexpr std::uint16_t kRelayPort = 9898;

  /// Takes the reply, without an error.
  using ResponseCallback =
      std::function<void(std::optional<std::string> reply, std::optional<platform::Error> error)>;

  /// Sends a log line.
  void printLogToFile(std::string_view log);

  /// Cancels the connection, which stays in `connection`: what is sent later is told as an error.
  void closeConnection();

  /// Sends the provider's state.
  void proxyStateWasUpdated(std::string_view state);

  /// Connects without a delegate: clears any.
  void connectToUDP(std::uint16_t port);

  /// Connects to a port of this machine, `relayPort` without one. Once connected, arms the one
  /// receive and sends `request`, if there is one.
  void connectToUDP(std::shared_ptr<DNSProxyToContentFilter> appToextDelegate,
                    std::optional<std::uint16_t> port, std::optional<std::string> request,
                    ResponseCallback respCallback);

  /// Sends one datagram.
  void sendUDP(platform::Data bytes);

  /// Arms one receive. What comes goes to the callback and ends the association; unless it is a
  /// reply ("&*..."), it is obeyed as a command.
  void receiveUDP(ResponseCallback respCallback);

  /// Hands a command to the delegate.
  void handle(const XpcUdpCommand& msg);

  /// The current association; a cancelled one stays until the next connect.
  std::shared_ptr<platform::NWConnection> connection;
  /// Who takes commands. A provider that owns this link keeps itself alive through it until it
  /// takes itself away here.
  std::shared_ptr<DNSProxyToContentFilter> appToExtDelegate;
  /// Where to connect when no port is given.
  std::uint16_t relayPort = kRelayPort;

 private:
  void send(XpcUdpCommandParser::CmdType cmdType, std::string_view payload);
  void stateChanged(const platform::NWConnection::State& state,
                    const std::optional<std::string>& request,
                    const ResponseCallback& respCallback);
  void received(const std::optional<platform::Data>& content, bool isComplete,
                const ResponseCallback& respCallback);
  void obey(platform::DataView datagram);
};

}  // namespace quillet
