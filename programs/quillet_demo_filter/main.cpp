// A stand-in for the filtering DNS service, for newcomers and tests.

#include <DeploymentValues.h>

#include <CLI/CLI.hpp>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "demo/DemoFilter.h"
#include "platform/base/Description.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/dispatch/SignalSource.h"
#include "programs/ListenAddress.h"

namespace {

using platform::MainLoop;
using quillet::DemoFilter;
using quillet::ListenAddress;

constexpr int kBadUsage = 2;
constexpr char kName[] = "quillet-demo-filter";

struct Options {
  std::vector<std::pair<ListenAddress, DemoFilter::Service>> listen;
  bool isQuiet = false;
};

std::string checkListenAddress(const std::string& text) {
  return ListenAddress::parse(text) ? "" : text + " is no ADDR:PORT";
}

/// The options as they were given.
struct Texts {
  std::vector<std::string> listen;
  std::vector<std::string> policy;
  std::vector<std::string> portal;
  bool isQuiet = false;
};

void addOptions(CLI::App& app, Texts& texts) {
  const auto addAddresses = [&app](const char* name, std::vector<std::string>& to,
                                   const char* what) {
    return app.add_option(name, to, what)
        ->type_name("ADDR:PORT")
        ->check(checkListenAddress)
        ->allow_extra_args(false);
  };
  addAddresses("--listen", texts.listen,
               "Address to serve, repeatable; IPv6 as [::1]:5381; port 0: any")
      ->required();
  addAddresses(
      "--policy", texts.policy,
      "Answer policy requests here: intranet.example goes to the last IPv4 --listen address");
  addAddresses("--portal", texts.portal, "Answer the registrations of a captive portal here");
  app.add_flag("--quiet", texts.isQuiet, "No line for each query");
  app.set_version_flag("--version", std::string(kName) + ' ' + quillet::deployment::kVersion);
}

/// Of options that were checked.
Options optionsFrom(const Texts& texts) {
  using Service = DemoFilter::Service;
  Options options;
  options.isQuiet = texts.isQuiet;
  for (const auto& [addresses, service] : {std::pair(&texts.listen, Service::queries),
                                           {&texts.policy, Service::policy},
                                           {&texts.portal, Service::portal}}) {
    for (const std::string& text : *addresses) {
      options.listen.emplace_back(*ListenAddress::parse(text), service);
    }
  }
  return options;
}

/// The options, or the status to end with.
std::pair<Options, std::optional<int>> parseOptions(int argc, char** argv) {
  CLI::App app(
      "Answers A, AAAA and HTTPS queries from the name itself and shows the identity it sees.",
      kName);
  Texts texts;
  addOptions(app, texts);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return {Options(), app.exit(error) == 0 ? 0 : kBadUsage};
  }
  return {optionsFrom(texts), std::nullopt};
}

/// Says where it listens, or why it cannot.
bool listen(DemoFilter& filter, const ListenAddress& address, DemoFilter::Service service) {
  const auto wanted = platform::SocketAddress::parse(address.host, address.port).value();
  const auto bound = filter.serve(wanted, service);
  if (bound) {
    std::printf("listening on %s\n", platform::description(*bound).c_str());
  } else {
    std::fprintf(stderr, "%s: cannot listen on %s: %s\n", kName, address.text().c_str(),
                 bound.error().message().c_str());
  }
  return bound.has_value();
}

int serve(const Options& options) {
  const platform::SignalSource stop({SIGTERM, SIGINT}, [](int) { MainLoop::shared().stop(); });
  DemoFilter filter(options.isQuiet);
  for (const auto& [address, service] : options.listen) {
    if (!listen(filter, address, service)) {
      return 1;
    }
  }
  std::fflush(stdout);
  MainLoop::shared().run();
  const auto& [queries, answered, refused] = filter.totals();
  std::printf("queries %" PRIu64 ", answered %" PRIu64 ", refused %" PRIu64 "\n", queries, answered,
              refused);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);  // the service goes on when nobody reads its lines any more
  try {
    const auto [options, status] = parseOptions(argc, argv);
    return status ? *status : serve(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", kName, error.what());
    return 1;
  }
}
