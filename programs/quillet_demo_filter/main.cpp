// A stand-in for the filtering DNS service, for newcomers and tests.

#include <DeploymentValues.h>
#include <sys/signalfd.h>

#include <CLI/CLI.hpp>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "programs/ListenAddress.h"
#include "programs/quillet_demo_filter/DatagramSocket.h"
#include "programs/quillet_demo_filter/DemoFilter.h"

namespace {

using quillet::DatagramSocket;
using quillet::DemoFilter;
using quillet::DemoSocket;
using quillet::ListenAddress;

constexpr int kBadUsage = 2;
constexpr char kName[] = "quillet-demo-filter";

struct Options {
  std::vector<std::pair<ListenAddress, DemoSocket::Service>> listen;
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
  using Service = DemoSocket::Service;
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

std::optional<DatagramSocket> bindSocket(const ListenAddress& address) {
  try {
    return DatagramSocket(address);
  } catch (const std::system_error& error) {
    std::fprintf(stderr, "%s: cannot listen on %s: %s\n", kName, address.text().c_str(),
                 error.code().message().c_str());
    return std::nullopt;
  }
}

/// A descriptor that is readable once the process was asked to end.
int stopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  ::sigprocmask(SIG_BLOCK, &signals, nullptr);
  return ::signalfd(-1, &signals, SFD_CLOEXEC);
}

int serve(const Options& options) {
  const int stop = stopSignals();
  std::vector<DemoSocket> sockets;
  for (const auto& [address, service] : options.listen) {
    auto socket = bindSocket(address);
    if (!socket) {
      return 1;
    }
    std::printf("listening on %s\n", socket->address().text().c_str());
    sockets.push_back({*std::move(socket), service});
  }
  std::fflush(stdout);
  DemoFilter filter(std::move(sockets), options.isQuiet);
  filter.run(stop);
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
