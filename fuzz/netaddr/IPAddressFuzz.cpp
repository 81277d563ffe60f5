// A text as an address: what is valid survives the way through its forms, its bytes and its number,
// and the platform's own parser agrees on what an address is.

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "fuzz/Require.h"
#include "netaddr/IPAddress.h"

namespace quillet {
namespace {

using fuzz::require;

/// The texts that the platform reads have no suffixes, and end at their first NUL.
bool isPlain(const std::string& text) {
  return text.find_first_of(std::string_view("/%\0", 3)) == std::string::npos;
}

void compareWithPlatform(const std::string& text) {
  std::array<std::uint8_t, 16> bytes;
  if (inet_pton(AF_INET, text.c_str(), bytes.data()) == 1) {
    const IPv4 ip(text);
    require(ip.valid() && ip.correct() && std::ranges::equal(ip.data(), std::span(bytes).first(4)));
  }
  const bool platformReads = inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1;
  const IPv6 ip(text);
  require(ip.valid() == platformReads);
  require(!platformReads || std::ranges::equal(ip.data(), bytes));
}

/// All queries of both families, whether the address is valid or not.
template <class Address>
void query(const Address& ip) {
  require(ip.valid() != ip.error().has_value());
  require(ip.startAddress().valid() && ip.endAddress().valid());
  require(ip.isInSubnet(ip) == ip.valid());
  require(ip.bitsBase2WithStart(0, 1000) == ip.binaryZeroPad());
  require(ip.binaryZeroPad().size() == 8 * ip.data().size());
  (void)ip.reversedForm();
  if (!ip.valid()) {
    return;
  }
  const Address again(*ip.correctForm());
  require(again.valid() && again.correct() && again.data() == ip.data());
  require(Address::fromBigInteger(ip.bigInteger()).data() == ip.data());
  require(IPAddress::addressWithData(ip.data()).correctForm() == ip.correctForm());
  require(ip.startAddress().bigInteger().lessThanOrEqualTo(ip.bigInteger()));
  require(ip.endAddress().bigInteger().greaterThanOrEqualTo(ip.bigInteger()));
}

void queryForms(const IPv6& ip) {
  (void)ip.decimal();
  if (ip.valid()) {
    require(IPv6(ip.canonicalForm()).canonical());
    require(IPv6(ip.v4inv6()).data() == ip.data());
  }
}

}  // namespace
}  // namespace quillet

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (quillet::isPlain(text)) {
    quillet::compareWithPlatform(text);
  }
  const quillet::IPv6 ipv6(text);
  quillet::query(quillet::IPv4(text));
  quillet::query(ipv6);
  quillet::queryForms(ipv6);
  quillet::fuzz::require(quillet::IPAddress(text).valid() ==
                         (quillet::IPv4(text).valid() || ipv6.valid()));
  (void)quillet::IPv4::ipv4FromHex(text).valid();
  (void)quillet::IPv6(text, static_cast<int>(size)).valid();
  return 0;
}
