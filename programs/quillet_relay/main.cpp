#include <DeploymentValues.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>

#include "platform/log/StartLogging.h"
#include "relay_service/RelayService.h"

namespace {

constexpr int kBadUsage = 2;
constexpr char kName[] = "quillet-relay";

/// The status to end with, if the command line asks for anything but to serve.
std::optional<int> readCommandLine(int argc, char** argv) {
  CLI::App app(
      "Relay service: takes commands on UDP ports 9898 and 9899 and serves the desktop app.",
      kName);
  app.set_version_flag("--version", std::string(kName) + ' ' + quillet::deployment::kVersion);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kBadUsage;
  }
  return std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (const auto status = readCommandLine(argc, argv)) {
      return *status;
    }
    platform::startLogging(kName);
    return QuilletXPCservice::RelayService().run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", kName, error.what());
    return 1;
  }
}
