#include "platform/foundation/StartLogging.h"
#include "programs/quillet_dns_proxy/CommandLine.h"
#include "programs/quillet_dns_proxy/ProxyProcess.h"

int main(int argc, char** argv) {
  platform::startLogging("quillet-dns-proxy");
  const auto commandLine = quillet::parseCommandLine(argc, argv);
  if (const int* status = std::get_if<int>(&commandLine)) {
    return *status;
  }
  return quillet::ProxyProcess(std::get<quillet::CommandLine>(commandLine)).run();
}
