#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "DnsProxyExt/relay/XpcUdpCommandParser.h"
#include "platform/base/Data.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/network/NWListener.h"
#include "relay_service/Published.h"
#include "relay_service/RelaySettings.h"

namespace QuilletXPCservice {

/// One UDP port of the relay service.
///
/// Each new client flushes the system's DNS cache and takes the place of the one before. One
/// receive at a time is armed, on the current client; each datagram is a marker message or a
/// command object, acted on in the order in which they came. A receive that brings an error or no
/// bytes ends the loop until the next client; a client that fails closes the port for good.
///
/// Everything after `start` runs on `queue`, and nothing else touches the fields: they need no
/// lock. A flush that hangs holds up this port only.
class UDPListener : public std::enable_shared_from_this<UDPListener> {
 public:
  explicit UDPListener(CacheFlush flush) : flush_(std::move(flush)) {}
  UDPListener(const UDPListener&) = delete;
  UDPListener& operator=(const UDPListener&) = delete;
  virtual ~UDPListener() = default;

  /// Opens the port; when that fails it stays closed, silently. Called once.
  void start(std::uint16_t port);
  /// Waits for the work that runs and runs no more; for the end of the process, on another thread.
  void stop() const { queue.stop(); }

  /// Flushes the DNS cache, then makes the client the current one and starts it.
  void acceptConnection(std::shared_ptr<platform::NWConnection> newConnection);
  /// Arms one receive on the current client; when it brings a datagram, acts on it and arms the
  /// next.
  void receive();
  /// Logs a command; a notification's payload becomes `proxyStatus`.
  void handleCommand(const quillet::XpcUdpCommand& cmd);
  /// Runs the flush command, if there is one, and logs what it printed. Blocks until it ends.
  void clearDNSCache();
  /// What the shell prints for the command line, both its streams, as valid UTF-8: what is not is
  /// replaced. A shell that cannot be started prints why. Blocks until all output is closed.
  virtual std::string runShellCommand(const std::string& command);

  /// What local clients set and read back.
  std::string xpcUser;
  /// What the provider reported last.
  std::string proxyStatus = "stopped";
  /// Absent until `start`.
  std::shared_ptr<platform::NWListener> listener;
  /// All that happens on it is one activity, told in the log's mode of its beginning.
  const platform::DispatchQueue queue =
      platform::DispatchQueue::serial(std::make_shared<platform::Activity>());
  /// The datagram received last.
  Published<std::optional<platform::Data>> messageReceived{std::nullopt};
  /// Whether the current client can be received from.
  Published<bool> isReady{false};
  /// False once the port is closed for good.
  Published<bool> listening{true};
  /// The current client.
  std::shared_ptr<platform::NWConnection> connection;

 private:
  using WeakConnection = std::weak_ptr<platform::NWConnection>;

  void listenerChanged(const platform::NWListener::State& state, std::uint16_t port);
  void connectionChanged(const platform::NWConnection::State& state,
                         const platform::NWConnection& changed);
  void close();

  void received(const WeakConnection& from, std::optional<platform::Data> content, bool isComplete,
                const std::optional<platform::NWError>& error);
  void letGo(const WeakConnection& from);
  void act(platform::DataView datagram);
  void sendUser();
  void updateUser(std::string_view text);

  const CacheFlush flush_;
};

}  // namespace QuilletXPCservice
