#include "platform/log/StartLogging.h"
#include "programs/quillet_dns_proxy/CommandLine.h"
#include "programs/quillet_dns_proxy/ProxyProcess.h"

int main(int argc, char** argv) {
  auto commandLine = quillet::parseCommandLine(argc, argv);
  if (const int* status = std::get_if<int>(&commandLine)) {
    return *status;
  }
  platform::startLogging("quillet-dns-proxy");
  return quillet::ProxyProcess(std::get<quillet::CommandLine>(std::move(commandLine))).run();
}
