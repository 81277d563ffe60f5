#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "DnsProxyExt/upstream/PolicyUDPClient.h"
#include "platform/dispatch/Timer.h"
#include "platform/network/NWPathMonitor.h"

namespace quillet {

/// Registers this machine with the captive-portal servers: a DNS query for the captive-portal
/// service, marked by one EDNS option, to each of them.
///
/// An exchange without an answer lasts as `PolicyUDPClient` says. Owned by a shared_ptr, which
/// exchanges hold. Inside the event loop only.
class CapPortalHelper : public std::enable_shared_from_this<CapPortalHelper> {
 public:
  /// One exchange with one server.
  class UdpHandler : public PolicyUDPClient {
   public:
    explicit UdpHandler(platform::Data req);
  };

  using ConnectivityDidChange = std::function<void(const platform::NWPath&)>;

  static constexpr std::int64_t kPort = 81;

  explicit CapPortalHelper(std::vector<std::string> portalIps);
  CapPortalHelper(const CapPortalHelper&) = delete;
  CapPortalHelper& operator=(const CapPortalHelper&) = delete;
  virtual ~CapPortalHelper() = default;

  /// Registers when more than `doRegistrationEach` seconds have passed since the last time.
  virtual void checkRegistration();

  /// Registers at every change of the network from now on, and while there is one, every
  /// `doRegistrationEach` seconds. The provider registers by its flows and does not call this; it
  /// is there for a host that wants registrations while nothing asks.
  virtual void startConnectivityListener();
  virtual void startConnectivityListener(ConnectivityDidChange connectivityDidChanged);
  /// Ends the above for good.
  virtual void stopConnectivityListener();

  const std::string logTag = "[CapPortalHelper]:";
  platform::NWPathMonitor monitor;
  std::optional<platform::Timer> doRegistrationTimer;
  /// Seconds.
  const double doRegistrationEach = 240;
  /// When the last registration was sent for a flow, or one was answered; seconds since 1970.
  std::int64_t lastRegistrationTime = 0;
  std::vector<std::string> ips;
  /// Where the servers listen.
  std::int64_t port = kPort;

 private:
  void sendCapPortalRegRequest(const std::vector<std::string>& to);
  [[nodiscard]] std::optional<platform::Data> registration() const;
  void pathChanged(const platform::NWPath& path, const ConnectivityDidChange& callback);
  void keepRegistering();
  void answered(const std::string& ip, const std::optional<platform::Data>& content,
                const std::optional<platform::NWError>& error);
};

}  // namespace quillet
