#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/base/Error.h"
#include "platform/networkextension/NEAppProxyUDPFlow.h"
#include "platform/networkextension/NEDNSSettings.h"
#include "platform/networkextension/NEProviderStopReason.h"
#include "platform/store/JSONValue.h"

namespace platform {

/// The provider options: a name to any value.
using NEProviderOptions = JSONObject;

/// A DNS proxy as the system drives it. Every entry is called inside the event loop.
class NEDNSProxyProvider {
 public:
  using StartCompletion = std::function<void(std::optional<Error>)>;
  using StopCompletion = std::function<void()>;

  NEDNSProxyProvider() = default;
  NEDNSProxyProvider(const NEDNSProxyProvider&) = delete;
  NEDNSProxyProvider& operator=(const NEDNSProxyProvider&) = delete;
  virtual ~NEDNSProxyProvider() = default;

  /// Starts with the configuration's options, or starts again with new ones. The completion carries
  /// what keeps it from serving, if anything does.
  virtual void startProxy(std::optional<NEProviderOptions> options, StartCompletion completion) = 0;
  /// Ends the service; the completion runs when that is done.
  virtual void stopProxy(NEProviderStopReason reason, StopCompletion completion) = 0;
  /// The machine is about to sleep, as soon as the completion has run.
  virtual void sleep(StopCompletion completion) = 0;
  /// The machine is awake again.
  virtual void wake() = 0;

  /// Offers a flow that an application has begun by asking `initialRemoteEndpoint`. False declines
  /// it.
  virtual bool handleNewUDPFlow(const std::shared_ptr<NEAppProxyUDPFlow>& flow,
                                const NWHostEndpoint& initialRemoteEndpoint) = 0;

  /// What the host has told of the system's own DNS servers.
  [[nodiscard]] const std::optional<std::vector<NEDNSSettings>>& systemDNSSettings() const {
    return systemDNSSettings_;
  }
  void setSystemDNSSettings(std::optional<std::vector<NEDNSSettings>> settings) {
    systemDNSSettings_ = std::move(settings);
  }

 private:
  std::optional<std::vector<NEDNSSettings>> systemDNSSettings_;
};

}  // namespace platform
