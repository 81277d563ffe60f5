// A text as an address: what is valid survives the way through its forms, its bytes and its number,
// and the platform's own parser agrees on what an address is.

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <string>

#include "fuzz/Target.h"
#include "netaddr/IPAddress.h"

namespace quillet::fuzz {

void compareWithPlatform(const std::string& text) {
  std::array<std::uint8_t, 16> bytes;
  if (inet_pton(AF_INET, text.c_str(), bytes.data()) == 1) {
    const IPv4 ip(text);
    require(ip.correct() && std::ranges::equal(ip.data(), std::span(bytes).first(4)));
  }
  const bool platformReads = inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1;
  const IPv6 ip(text);
  require(ip.valid() == platformReads);
  require(!platformReads || std::ranges::equal(ip.data(), bytes));
}

/// All queries of both families, whether the address is valid or not.
template <class Address>
void query(const Address& ip) {
  require(ip.valid() != ip.error().has_value() && ip.isInSubnet(ip) == ip.valid());
  require(ip.bitsBase2WithStart(0, 1000) == ip.binaryZeroPad());
  require(ip.binaryZeroPad().size() == 8 * ip.data().size());
  if (!ip.valid()) {
    return;
  }
  const Address again(*ip.correctForm());
  require(again.correct() && again.data() == ip.data());
  require(Address::fromBigInteger(ip.bigInteger()).data() == ip.data());
  require(IPAddress::addressWithData(ip.data()).correctForm() == ip.correctForm());
  require(ip.startAddress().bigInteger().lessThanOrEqualTo(ip.bigInteger()));
  require(ip.endAddress().bigInteger().greaterThanOrEqualTo(ip.bigInteger()));
}

void run(platform::DataView input) {
  const std::string text(platform::textOf(input));
  // The texts that the platform reads have no suffixes, and end at their first NUL.
  if (text.find_first_of(std::string_view("/%\0", 3)) == std::string::npos) {
    compareWithPlatform(text);
  }
  const IPv4 ipv4(text);
  const IPv6 ipv6(text);
  query(ipv4);
  query(ipv6);
  (void)ipv6.decimal();
  require(!ipv6.valid() ||
          (IPv6(ipv6.canonicalForm()).canonical() && IPv6(ipv6.v4inv6()).data() == ipv6.data()));
  require(IPAddress(text).valid() == (ipv4.valid() || ipv6.valid()));
  (void)IPv4::ipv4FromHex(text).valid();
  (void)IPv6(text, static_cast<int>(text.size())).valid();
}

}  // namespace quillet::fuzz
