#include "netaddr/IPAddress.h"

#include "netaddr/NamedException.h"
#include "netaddr/PaddedText.h"

namespace quillet {
namespace {

std::variant<IPv4, IPv6> readAddress(std::string_view address) {
  IPv4 ipv4(address);
  if (ipv4.valid()) {
    return ipv4;
  }
  return IPv6(address);
}

}  // namespace

IPAddress::IPAddress(std::string_view address) : underlyingAddress_(readAddress(address)) {}

IPAddress IPAddress::addressWithData(platform::DataView bytes) {
  if (bytes.size() != 4 && bytes.size() != 16) {
    throw NamedException(
        "ipInvalidLength",
        "The provided data length does not correspond to neighter a IPv4 nor a IPv6 address");
  }
  std::string digits;
  for (const std::uint8_t byte : bytes) {
    appendHexadecimal(digits, byte, 2);
  }
  const BigInt value(digits, 16);
  return bytes.size() == 4 ? IPAddress(IPv4::fromBigInteger(value))
                           : IPAddress(IPv6::fromBigInteger(value));
}

IPAddress IPAddress::startAddress() const {
  return std::visit([](const auto& ip) { return IPAddress(ip.startAddress()); },
                    underlyingAddress_);
}

IPAddress IPAddress::endAddress() const {
  return std::visit([](const auto& ip) { return IPAddress(ip.endAddress()); }, underlyingAddress_);
}

const SubnetAddress& IPAddress::ip() const {
  return std::visit([](const auto& ip) -> const SubnetAddress& { return ip; }, underlyingAddress_);
}

}  // namespace quillet
