#include "platform/udp/NetworkInterface.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <utility>

#include "platform/base/FileDescriptor.h"

namespace platform {

namespace {

using AddressList = std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)>;

AddressList readAddresses() {
  ifaddrs* first = nullptr;
  if (::getifaddrs(&first) != 0) {
    first = nullptr;
  }
  return {first, &::freeifaddrs};
}

template <class Address>
Data octets(const Address& address) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(&address);
  return {bytes, bytes + sizeof address};
}

std::optional<Data> addressOf(const sockaddr* address) {
  if (address != nullptr && address->sa_family == AF_INET) {
    sockaddr_in v4{};
    std::memcpy(&v4, address, sizeof v4);
    return octets(v4.sin_addr);
  }
  if (address != nullptr && address->sa_family == AF_INET6) {
    sockaddr_in6 v6{};
    std::memcpy(&v6, address, sizeof v6);
    return octets(v6.sin6_addr);
  }
  return std::nullopt;
}

/// 169.254.0.0/16 (RFC 3927) and fe80::/10 (RFC 4291 section 2.5.6).
bool isLinkLocal(const Data& address) {
  return address.size() == sizeof(in_addr) ? address[0] == 169 && address[1] == 254
                                           : address[0] == 0xFE && (address[1] & 0xC0) == 0x80;
}

/// Cheap, and true as well of addresses that are not this machine's where the system permits it to
/// bind those (ip_nonlocal_bind).
bool canBeBound(SocketAddress address) {
  address.setPort(0);
  const FileDescriptor socket(::socket(address.family(), SOCK_DGRAM | SOCK_CLOEXEC, 0));
  return socket.isOpen() && ::bind(socket.get(), address.data(), address.size()) == 0;
}

/// All of 127.0.0.0/8 is this machine, although an interface holds one address of it.
bool isIPv4Loopback(const SocketAddress& address) {
  return !address.isIPv6() &&
         ntohl(address.v4().sin_addr.s_addr) >> IN_CLASSA_NSHIFT == IN_LOOPBACKNET;
}

/// The interface of `all` that has this address, or the end.
template <class Interfaces>
auto findHolder(Interfaces& all, const SocketAddress& address) {
  return std::find_if(all.begin(), all.end(), [octets = addressOf(address.data())](auto& one) {
    const auto& held = one.addresses;
    return std::find(held.begin(), held.end(), octets) != held.end();
  });
}

}  // namespace

std::vector<NetworkInterface> NetworkInterface::readAll() {
  std::map<std::string, NetworkInterface> byName;
  const auto list = readAddresses();
  for (const ifaddrs* entry = list.get(); entry != nullptr; entry = entry->ifa_next) {
    auto& interface = byName[entry->ifa_name];
    interface.isLoopback = (entry->ifa_flags & IFF_LOOPBACK) != 0;
    interface.isRunning = (entry->ifa_flags & IFF_UP) != 0 && (entry->ifa_flags & IFF_RUNNING) != 0;
    if (auto address = addressOf(entry->ifa_addr)) {
      interface.addresses.push_back(*std::move(address));
    }
  }
  std::vector<NetworkInterface> result;
  for (auto& [name, interface] : byName) {
    interface.name = name;
    interface.index = ::if_nametoindex(name.c_str());
    result.push_back(std::move(interface));
  }
  return result;
}

std::optional<NetworkInterface> NetworkInterface::holding(const SocketAddress& address) {
  auto all = readAll();
  const auto holder = findHolder(all, address);
  return holder != all.end() ? std::optional(std::move(*holder)) : std::nullopt;
}

bool NetworkInterface::isOfThisMachine(const SocketAddress& address) {
  return canBeBound(address) && isListed(address, readAll());
}

bool NetworkInterface::isListed(const SocketAddress& address,
                                const std::vector<NetworkInterface>& all) {
  return isIPv4Loopback(address) || findHolder(all, address) != all.end();
}

bool NetworkInterface::hasAddress(std::size_t length) const {
  return std::any_of(addresses.begin(), addresses.end(), [length](const Data& address) {
    return address.size() == length && !isLinkLocal(address);
  });
}

}  // namespace platform
