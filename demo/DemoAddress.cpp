#include "demo/DemoAddress.h"

#include <algorithm>
#include <array>

namespace quillet {

namespace {

constexpr std::uint64_t kFnvOffsetBasis = 0xCBF29CE484222325;
constexpr std::uint64_t kFnvPrime = 0x100000001B3;

constexpr std::uint32_t kBenchmarkNetwork = 0xC6120000;  // 198.18.0.0/15, RFC 2544
constexpr std::uint32_t kBenchmarkHostMask = 0x0001FFFF;
constexpr std::array<std::uint8_t, 8> kDocumentationNetwork{0x20, 0x01, 0x0D, 0xB8};  // RFC 3849

}  // namespace

std::uint64_t nameHash(std::string_view name) {
  if (name.ends_with('.')) {
    name.remove_suffix(1);
  }
  std::uint64_t hash = kFnvOffsetBasis;
  for (const char c : name) {
    const bool isUpper = c >= 'A' && c <= 'Z';
    hash ^= static_cast<unsigned char>(isUpper ? c + ('a' - 'A') : c);
    hash *= kFnvPrime;
  }
  return hash;
}

DnsToolsSocket::IPv4 demoIPv4(std::string_view name) {
  const auto host = static_cast<std::uint32_t>(nameHash(name)) & kBenchmarkHostMask;
  return DnsToolsSocket::IPv4(kBenchmarkNetwork | host);
}

DnsToolsSocket::IPv6 demoIPv6(std::string_view name) {
  std::array<std::uint8_t, 16> octets{};
  std::copy(kDocumentationNetwork.begin(), kDocumentationNetwork.end(), octets.begin());
  const std::uint64_t hash = nameHash(name);
  for (std::size_t i = 0; i < 8; ++i) {
    octets[8 + i] = static_cast<std::uint8_t>(hash >> (56 - 8 * i));
  }
  return DnsToolsSocket::IPv6::networkBytes(octets).value();
}

}  // namespace quillet
