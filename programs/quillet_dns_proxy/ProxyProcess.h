#pragma once

#include <memory>
#include <optional>
#include <string>

#include "DnsProxyExt/DnsProxyExt.h"
#include "platform/flowhost/FlowHost.h"
#include "platform/service/ServiceManager.h"
#include "programs/quillet_dns_proxy/CommandLine.h"
#include "queries/QueryLedger.h"

namespace quillet {

/// The wiring of the process: flow host, provider, signals and service manager.
class ProxyProcess {
 public:
  explicit ProxyProcess(CommandLine commandLine);

  /// Serves until SIGTERM or SIGINT; SIGHUP starts the provider again with the vendor data as it is
  /// then. Returns the process' exit status: 1, after one line that says why, when it cannot start.
  int run();

 private:
  using Options = std::optional<platform::NEProviderOptions>;

  /// Absent, after a line that says why, when the file cannot be used.
  [[nodiscard]] std::optional<Options> vendorOptions() const;
  bool bindHost();
  bool serve(Options options);
  void startProvider(Options options);
  /// The settings stay as they are when the file cannot be used.
  void reload();
  void handleSignal(int signal);
  /// For people who look at the service.
  [[nodiscard]] std::string status() const;
  /// Ends the loop after what is queued already: the provider's last sends and states are told.
  void stop();

  const CommandLine commandLine_;
  const std::shared_ptr<QueryLedger> ledger_ = std::make_shared<QueryLedger>();
  std::shared_ptr<DnsProxyExt> provider_;
  std::unique_ptr<platform::FlowHost> host_;
  platform::ServiceManager serviceManager_;
};

}  // namespace quillet
