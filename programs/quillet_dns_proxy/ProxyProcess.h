#pragma once

#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>

#include "DnsProxyExt/DnsProxyExt.h"
#include "control/ControlService.h"
#include "platform/flowhost/FlowHost.h"
#include "platform/service/ServiceManager.h"
#include "platform/xpc/JSONRPCServer.h"
#include "programs/quillet_dns_proxy/CommandLine.h"
#include "queries/QueryLedger.h"

namespace quillet {

/// The wiring of the process: flow host, provider, control socket, signals and service manager.
class ProxyProcess {
 public:
  explicit ProxyProcess(CommandLine commandLine);

  /// Serves until SIGTERM or SIGINT; SIGHUP starts the provider again with the vendor data as it is
  /// then. Returns the process' exit status: 1, after one line that says why, when it cannot start.
  int run();

 private:
  using Options = std::optional<platform::NEProviderOptions>;

  /// The error is logged, too.
  [[nodiscard]] tl::expected<Options, std::string> vendorOptions() const;
  bool bindHost();
  bool serve(Options options);
  void startProvider(Options options);
  void serveControl();
  /// The settings stay as they are when the file cannot be used; gives why, after a line that says
  /// so.
  std::optional<std::string> reload();
  void handleSignal(int signal);
  /// For people who look at the service.
  [[nodiscard]] std::string status() const;
  /// Ends the loop after what is queued already: the provider's last sends and states are told.
  void stop();

  const CommandLine commandLine_;
  const std::shared_ptr<QueryLedger> ledger_ = std::make_shared<QueryLedger>();
  std::shared_ptr<DnsProxyExt> provider_;
  std::unique_ptr<platform::FlowHost> host_;
  std::shared_ptr<ControlService> control_;
  std::unique_ptr<platform::JSONRPCServer> controlServer_;
  platform::ServiceManager serviceManager_;
};

}  // namespace quillet
