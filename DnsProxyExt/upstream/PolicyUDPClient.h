#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/base/Data.h"
#include "platform/network/NWConnection.h"

namespace quillet {

/// Sends one request over UDP and takes one answer. Open to subclassing.
///
/// There is no time limit and no retry. An exchange without an answer lasts until the platform
/// needs its connection for another one (`NWConnection::kMaxConnections`); a lost answer is made
/// good by the owner's next request. One that is over without an answer (an empty one, a request
/// that cannot be sent, a connection that waits or failed, which never recovers) lets go of its
/// connection without a further log line.
///
/// Used once: make it as a shared_ptr, set `onPolicyDataReceived`, connect. From then on the
/// connection's handlers keep the client alive until the connection is cancelled. Inside the event
/// loop only.
class PolicyUDPClient : public std::enable_shared_from_this<PolicyUDPClient> {
 public:
  /// Takes the answer, whether the exchange is complete with it, and the failure of an exchange
  /// without one. Not called for a server that cannot be reached at all.
  using PolicyDataReceived =
      std::function<void(std::optional<platform::Data> content, std::optional<bool> isComplete,
                         std::optional<platform::NWError> error)>;

  explicit PolicyUDPClient(platform::Data req);
  PolicyUDPClient(const PolicyUDPClient&) = delete;
  PolicyUDPClient& operator=(const PolicyUDPClient&) = delete;
  virtual ~PolicyUDPClient() = default;

  /// Connects and sends the request as soon as the connection is ready. A port outside 0 to 65535
  /// is one log line and no connection.
  virtual void connectWithUDP(const std::string& ip, std::int64_t port);
  /// Sends one datagram and arms one receive. Unconnected, neither.
  virtual void sendUDPDatagrams(platform::Data datagram);
  /// Takes the next datagram. Unconnected, none.
  virtual void receiveUDP(platform::NWConnection::ReceiveCompletion completion);

  const platform::Data request;
  /// What every log line begins with; at first the type's name.
  std::string logTag;
  /// The server, set by `connectWithUDP`.
  std::string host;
  std::int64_t port = 0;
  PolicyDataReceived onPolicyDataReceived;
  /// Absent until `connectWithUDP`.
  std::shared_ptr<platform::NWConnection> connection;

 protected:
  /// For a subclass, under its own name.
  PolicyUDPClient(platform::Data req, std::string typeName);

 private:
  void connectToUDP(const platform::NWEndpoint::Host& toHost, platform::NWEndpoint::Port toPort);
  void stateChanged(const platform::NWConnection::State& state);
  void datagramSent(const std::string& info, const std::optional<platform::NWError>& error);
  void received(const std::string& info, std::optional<platform::Data> content, bool isComplete,
                const std::optional<platform::NWError>& error);
  void receivedNothing(const std::string& info, std::optional<platform::Data> content,
                       const std::optional<platform::NWError>& error);
  void receivedAnswer(const std::string& info, platform::Data content,
                      const std::optional<platform::NWError>& error);
  void tell(std::optional<platform::Data> content, bool isComplete,
            const std::optional<platform::NWError>& error) const;
  void cancelConnection();
  void letGo();
  void letGoLater();
  [[nodiscard]] std::string connectionInfo() const;

  std::size_t answerCount_ = 0;
};

}  // namespace quillet
