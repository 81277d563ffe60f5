#include "platform/flowhost/SystemResolver.h"

#include <algorithm>
#include <utility>

#include "platform/flowhost/ResolverExchange.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/NSLog.h"
#include "platform/networkextension/NEDNSSettings.h"

namespace platform {

namespace {

std::optional<FileState> stateOf(const std::filesystem::path& file) {
  const auto state = regularFileState(file);
  return state ? std::optional(*state) : std::nullopt;
}

/// Whether the address is one of this machine's: only such a one can be bound.
bool isLocal(SocketAddress address) {
  address.setPort(0);
  const FileDescriptor socket(::socket(address.family(), SOCK_DGRAM | SOCK_CLOEXEC, 0));
  return socket.isOpen() && ::bind(socket.get(), address.data(), address.size()) == 0;
}

}  // namespace

SystemResolver::SystemResolver(std::filesystem::path resolvConf, std::uint16_t port,
                               std::vector<SocketAddress> ownAddresses)
    : resolvConf_(std::move(resolvConf)), port_(port), ownAddresses_(std::move(ownAddresses)) {}

void SystemResolver::serve(std::shared_ptr<NEAppProxyUDPFlow> flow) {
  if (const auto address = server()) {
    ResolverExchange::begin(std::move(flow), *address);
    return;
  }
  const Error error("no DNS server of the system's own");
  flow->closeReadWithError(error);
  flow->closeWriteWithError(error);
}

std::optional<SocketAddress> SystemResolver::server() {
  const auto state = stateOf(resolvConf_);
  if (!isRead_ || state != state_) {
    readAgain(state);
  }
  return server_;
}

void SystemResolver::readAgain(const std::optional<FileState>& state) {
  isRead_ = true;
  state_ = state;
  const auto settings = NEDNSSettings::fromFile(resolvConf_);
  server_ = settings ? firstUsable(settings->servers) : std::nullopt;
  if (!server_) {
    NSLog("SystemResolver: no usable DNS server in ", resolvConf_.native(),
          settings ? "" : ": " + settings.error().message());
  }
}

std::optional<SocketAddress> SystemResolver::firstUsable(
    const std::vector<std::string>& servers) const {
  for (const auto& text : servers) {
    const auto server = SocketAddress::parse(text, port_);
    if (server && !isOwn(*server)) {
      return server;
    }
  }
  return std::nullopt;
}

// The wildcard address stands for this machine: it counts as our own whatever we serve.
bool SystemResolver::isOwn(const SocketAddress& server) const {
  return server.isWildcard() ||
         std::any_of(ownAddresses_.begin(), ownAddresses_.end(), [&](const SocketAddress& own) {
           const bool isCovered = own.isWildcard() && own.family() == server.family() &&
                                  own.port() == server.port() && isLocal(server);
           return own == server || isCovered;
         });
}

}  // namespace platform
