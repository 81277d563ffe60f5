#include <DeploymentValues.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>
#include <variant>

#include "platform/log/StartLogging.h"
#include "programs/LogOption.h"
#include "relay_service/RelayService.h"

namespace {

constexpr int kBadUsage = 2;
constexpr char kName[] = "quillet-relay";

namespace deployment = quillet::deployment;
using QuilletXPCservice::RelaySettings;

void addText(CLI::App& app, const char* name, std::string& value, const char* type,
             const char* help) {
  const auto refuseEmpty = [](const std::string& text) {
    return std::string(text.empty() ? "needs a text" : "");
  };
  app.add_option(name, value, help)->type_name(type)->check(refuseEmpty)->capture_default_str();
}

/// The flush command may be empty, and `--flush-command=` is how a unit writes that: CLI11 takes it
/// for an option without an argument.
void addOptions(CLI::App& app, RelaySettings& settings) {
  auto& [flush, lookup] = settings;
  addText(app, "--shell", flush.shell, "PATH", "Shell that runs the flush command");
  app.add_option("--flush-command", flush.command,
                 "Command line that flushes the system's DNS cache; empty: no flush")
      ->type_name("COMMAND=" + flush.command)
      ->expected(0, 1);
  addText(app, "--public-ip-name", lookup.name, "NAME",
          "Name whose address is the one of whoever looks it up");
  addText(app, "--public-ip-resolver", lookup.resolver, "HOST",
          "Host name or address of that name's resolver, port 53");
  quillet::addLogOption(app,
                        "What is logged: all, or neither who comes nor the flush and the sends");
}

/// What to run, or the status to end with if the command line asks for anything but to serve.
std::variant<RelaySettings, int> readCommandLine(int argc, char** argv) {
  CLI::App app(
      "Relay service: takes commands on UDP ports 9898 and 9899 and serves the desktop app.",
      kName);
  app.set_version_flag("--version", std::string(kName) + ' ' + deployment::kVersion);
  RelaySettings settings{{deployment::kShell, deployment::kFlushCommand},
                         {deployment::kPublicIpName, deployment::kPublicIpResolver}};
  addOptions(app, settings);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kBadUsage;
  }
  return settings;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    auto settings = readCommandLine(argc, argv);
    if (const int* status = std::get_if<int>(&settings)) {
      return *status;
    }
    platform::startLogging(kName);
    return QuilletXPCservice::RelayService(std::get<RelaySettings>(std::move(settings))).run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", kName, error.what());
    return 1;
  }
}
