#include <cstdio>
#include <exception>
#include <utility>
#include <variant>

#include "platform/log/StartLogging.h"
#include "programs/quillet_dns_proxy/Check.h"
#include "programs/quillet_dns_proxy/CommandLine.h"
#include "programs/quillet_dns_proxy/ProxyProcess.h"

namespace {

int run(int argc, char** argv) {
  auto parsed = quillet::parseCommandLine(argc, argv);
  if (const int* status = std::get_if<int>(&parsed)) {
    return *status;
  }
  auto& commandLine = std::get<quillet::CommandLine>(parsed);
  if (commandLine.check) {
    return quillet::checkSettings(commandLine);
  }
  platform::startLogging("quillet-dns-proxy");
  return quillet::ProxyProcess(std::move(commandLine)).run();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quillet-dns-proxy: %s\n", error.what());
    return 1;
  }
}
