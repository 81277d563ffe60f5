#include "programs/quillet_dns_proxy/ProxyProcess.h"

#include <csignal>

#include "DnsProxyExt/SafeSearchDNSProxyProvider.h"
#include "platform/base/DescriptorLimit.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/dispatch/SignalSource.h"
#include "platform/flowhost/ResolvConf.h"
#include "platform/log/NSLog.h"
#include "platform/network/NWConnection.h"
#include "platform/store/UserDefaults.h"
#include "programs/quillet_dns_proxy/VendorData.h"

namespace quillet {

using platform::DispatchQueue;
using platform::FlowHost;
using platform::NEProviderStopReason;
using platform::NSLog;

namespace {

constexpr int kCannotStart = 1;

// As many as the bounds on connections allow for, and what everything else needs.
constexpr std::size_t kDescriptors =
    platform::NWConnection::kMaxConnections + platform::JSONRPCServer::kMaxConnections + 256;

/// A folder that cannot be made shows when the first value is to be kept there.
void useDefaultsDirectory(const std::filesystem::path& directory) {
  std::error_code ignored;
  std::filesystem::create_directories(directory, ignored);
  platform::UserDefaults::setDirectory(directory);
  platform::UserDefaults::watchChanges(true);
}

std::optional<std::vector<platform::NEDNSSettings>> systemSettings() {
  auto settings = platform::readResolvConf();
  if (!settings) {
    return std::nullopt;
  }
  return std::vector{*std::move(settings)};
}

std::shared_ptr<DnsProxyExt> makeProvider(bool safeSearch) {
  if (safeSearch) {
    return std::make_shared<SafeSearchDNSProxyProvider>();
  }
  return std::make_shared<DnsProxyExt>();
}

}  // namespace

ProxyProcess::ProxyProcess(CommandLine commandLine) : commandLine_(std::move(commandLine)) {}

int ProxyProcess::run() {
  platform::raiseDescriptorLimit(kDescriptors);
  useDefaultsDirectory(commandLine_.defaultsDirectory);
  const platform::SignalSource signals({SIGTERM, SIGINT, SIGHUP},
                                       [this](int signal) { handleSignal(signal); });
  auto options = vendorOptions();
  if (!options || !bindHost() || !serve(*std::move(options))) {
    return kCannotStart;
  }
  platform::MainLoop::shared().run();
  return 0;
}

tl::expected<ProxyProcess::Options, std::string> ProxyProcess::vendorOptions() const {
  auto options = readProviderOptions(commandLine_.vendorData);
  if (!options) {
    NSLog(options.error());
  }
  return options;
}

bool ProxyProcess::bindHost() {
  platform::FlowHostOptions options;
  for (const auto& address : commandLine_.listen) {
    options.listen.push_back({address.host, std::to_string(address.port)});
  }
  options.sourceApp = commandLine_.sourceApp;
  options.identify = commandLine_.identify;
  options.observer = ledger_;
  auto host = FlowHost::bind(options);
  if (!host) {
    NSLog(host.error().text());
    return false;
  }
  host_ = *std::move(host);
  return true;
}

/// The provider is made only when nothing else is in the way: it logs as soon as it is there.
bool ProxyProcess::serve(Options options) {
  provider_ = makeProvider(commandLine_.safeSearch);
  provider_->onRouted = QueryLedger::routed;
  if (const auto error = host_->serve(*provider_)) {
    NSLog(error->text());
    return false;
  }
  for (const auto& endpoint : host_->boundEndpoints()) {
    NSLog("FlowHost: listening on ", endpoint);
  }
  serveControl();
  startProvider(std::move(options));
  return true;
}

/// Without a control socket the proxy serves all the same.
void ProxyProcess::serveControl() {
  if (!commandLine_.control) {
    return;
  }
  ControlledProcess process{.unknownApplication = commandLine_.sourceApp,
                            .openQueries = [this] { return ledger_->open(); },
                            .reload = [this] { return reload(); }};
  for (const auto& endpoint : host_->boundEndpoints()) {
    process.listen.push_back(platform::description(endpoint));
  }
  control_ = std::make_shared<ControlService>(provider_, std::move(process));
  ledger_->observe([control = control_](const QueryOutcome& outcome) { control->tell(outcome); });
  controlServer_ = std::make_unique<platform::JSONRPCServer>(*control_);
  if (const auto error = controlServer_->listen(*commandLine_.control)) {
    NSLog("control socket: ", *error);
  }
}

void ProxyProcess::startProvider(Options options) {
  provider_->setSystemDNSSettings(systemSettings());
  provider_->startProxy(std::move(options), [this](const std::optional<platform::Error>& error) {
    if (!error) {
      serviceManager_.ready(status());
    }
  });
}

void ProxyProcess::handleSignal(int signal) {
  if (signal == SIGHUP) {
    reload();
  } else {
    stop();
  }
}

std::optional<std::string> ProxyProcess::reload() {
  serviceManager_.reloading();
  auto options = vendorOptions();
  if (!options) {
    serviceManager_.ready(status() + "; settings of before, the vendor data cannot be used");
    return options.error();
  }
  startProvider(*std::move(options));
  return std::nullopt;
}

std::string ProxyProcess::status() const {
  std::string text = "Serving";
  for (const auto& endpoint : host_->boundEndpoints()) {
    platform::describe(text += ' ', endpoint);
  }
  return text;
}

void ProxyProcess::stop() {
  serviceManager_.stopping();
  host_->stop();
  provider_->stopProxy(NEProviderStopReason::kUserInitiated, [this] {
    DispatchQueue::global().async([this] {
      ledger_->giveUpAll();
      if (control_) {
        control_->finish();
      }
      platform::MainLoop::shared().stop();
    });
  });
}

}  // namespace quillet
