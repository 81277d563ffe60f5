#include "programs/quillet_dns_proxy/Check.h"

#include <cstdio>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "DnsProxyExt/settings/MDMConfigurationManager.h"
#include "DnsProxyExt/settings/SettingsCheck.h"
#include "platform/log/LogEscape.h"
#include "platform/store/UserDefaults.h"
#include "platform/udp/NetworkInterface.h"
#include "platform/udp/OwnSockets.h"
#include "programs/quillet_dns_proxy/VendorData.h"

namespace quillet {

using platform::NetworkInterface;
using platform::OwnSockets;
using platform::SocketAddress;

namespace {

/// By the kernel's list as it is at first: thousands of servers may be asked about.
bool isOfThisMachine(const SocketAddress& address) {
  static const auto all = NetworkInterface::readAll();
  return NetworkInterface::isListed(address, all);
}

/// The sockets that the proxy would serve with.
class WouldBeSockets {
 public:
  explicit WouldBeSockets(const std::vector<ListenAddress>& listen) {
    for (const auto& address : listen) {
      entries_.emplace_back(SocketAddress::parse(address.host, address.port).value(),
                            OwnSockets::Use::serving);
    }
  }

  static bool serveAt(const SocketAddress& address) {
    return OwnSockets::shared().servesAt(address, isOfThisMachine);
  }

 private:
  std::list<OwnSockets::Entry> entries_;
};

/// Whether there was nothing to print.
bool print(std::string_view line) {
  std::string text;
  platform::appendEscaped(text, line);
  std::puts(text.c_str());
  return false;
}

bool print(const std::filesystem::path& file, const std::vector<SettingsFinding>& findings) {
  for (const auto& [key, what] : findings) {
    print(file.string().append(": ").append(key).append(": ").append(what));
  }
  return findings.empty();
}

bool checkVendorFile(const std::filesystem::path& file) {
  const auto document = readSettings(file);
  return document ? print(file, checkVendorData(*document, WouldBeSockets::serveAt))
                  : print(document.error());
}

/// One that is not there is empty.
bool checkDefaultsFile(const std::filesystem::path& file) {
  if (platform::regularFileState(file) ==
      tl::unexpected(std::make_error_code(std::errc::no_such_file_or_directory))) {
    return true;
  }
  const auto document = readSettings(file);
  return document ? print(file, checkGroupDefaults(*document)) : print(document.error());
}

}  // namespace

int checkSettings(const CommandLine& commandLine) {
  const WouldBeSockets sockets(commandLine.listen);
  const bool isVendorFine = !commandLine.vendorData || checkVendorFile(*commandLine.vendorData);
  const bool areDefaultsFine = checkDefaultsFile(platform::UserDefaults::fileOf(
      commandLine.defaultsDirectory, MDMConfigurationManager::kGroupId));
  return isVendorFine && areDefaultsFine ? 0 : 1;
}

}  // namespace quillet
