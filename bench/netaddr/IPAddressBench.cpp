// Parsing and formatting addresses beside inet_pton and inet_ntop, which know neither prefix lengths nor
// zones, make no error texts and keep nothing of the text.

#include "netaddr/IPAddress.h"

#include <arpa/inet.h>
#include <benchmark/benchmark.h>

#include <array>

namespace quillet {
namespace {

constexpr const char* kIPv4 = "192.168.117.254";
constexpr const char* kShort = "fe80::1";
constexpr const char* kLong = "2001:db8:85a3:8d3:1319:8a2e:370:7348";
constexpr const char* kGap = "2001:db8:85a3::8a2e:370:7334";

template <class Address>
void parse(benchmark::State& state, const char* text) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(Address(text));
  }
}

template <class Address>
void format(benchmark::State& state, const char* text) {
  const Address ip(text);
  for (auto _ : state) {
    benchmark::DoNotOptimize(ip.correctForm());
  }
}

void parsePlatform(benchmark::State& state, int family, const char* text) {
  std::array<std::uint8_t, 16> bytes;
  for (auto _ : state) {
    benchmark::DoNotOptimize(inet_pton(family, text, bytes.data()));
    benchmark::DoNotOptimize(bytes);
  }
}

void formatPlatform(benchmark::State& state, int family, const char* text) {
  std::array<std::uint8_t, 16> bytes;
  inet_pton(family, text, bytes.data());
  std::array<char, INET6_ADDRSTRLEN> written;
  for (auto _ : state) {
    benchmark::DoNotOptimize(inet_ntop(family, bytes.data(), written.data(), written.size()));
    benchmark::DoNotOptimize(written);
  }
}

void isInSubnet(benchmark::State& state, const char* text, const char* subnet) {
  const IPAddress ip(text);
  const IPAddress other(subnet);
  for (auto _ : state) {
    benchmark::DoNotOptimize(ip.isInSubnet(other));
  }
}

BENCHMARK_CAPTURE(parse<IPv4>, ipv4, kIPv4);
BENCHMARK_CAPTURE(parsePlatform, ipv4, AF_INET, kIPv4);
BENCHMARK_CAPTURE(format<IPv4>, ipv4, kIPv4);
BENCHMARK_CAPTURE(formatPlatform, ipv4, AF_INET, kIPv4);
BENCHMARK_CAPTURE(parse<IPv6>, short, kShort);
BENCHMARK_CAPTURE(parsePlatform, short, AF_INET6, kShort);
BENCHMARK_CAPTURE(format<IPv6>, short, kShort);
BENCHMARK_CAPTURE(formatPlatform, short, AF_INET6, kShort);
BENCHMARK_CAPTURE(parse<IPv6>, gap, kGap);
BENCHMARK_CAPTURE(parsePlatform, gap, AF_INET6, kGap);
BENCHMARK_CAPTURE(format<IPv6>, gap, kGap);
BENCHMARK_CAPTURE(formatPlatform, gap, AF_INET6, kGap);
BENCHMARK_CAPTURE(parse<IPv6>, long, kLong);
BENCHMARK_CAPTURE(parsePlatform, long, AF_INET6, kLong);
BENCHMARK_CAPTURE(format<IPv6>, long, kLong);
BENCHMARK_CAPTURE(formatPlatform, long, AF_INET6, kLong);
BENCHMARK_CAPTURE(parse<IPAddress>, long, kLong);
BENCHMARK_CAPTURE(isInSubnet, ipv4, "10.0.0.5", "10.0.0.0/8");
BENCHMARK_CAPTURE(isInSubnet, ipv6, kGap, "2001:db8::/32");

}  // namespace
}  // namespace quillet
