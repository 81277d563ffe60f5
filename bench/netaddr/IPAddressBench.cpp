// Parsing and formatting addresses beside inet_pton and inet_ntop, which know neither prefix
// lengths nor zones, make no error texts and keep nothing of the text.

#include <arpa/inet.h>
#include <benchmark/benchmark.h>

#include <array>

#include "bench/Allocations.h"
#include "netaddr/IPAddress.h"

namespace quillet {
namespace {

constexpr const char* kIPv4 = "192.168.117.254";
constexpr const char* kShort = "fe80::1";
constexpr const char* kLong = "2001:db8:85a3:8d3:1319:8a2e:370:7348";
constexpr const char* kGap = "2001:db8:85a3::8a2e:370:7334";

template <class Address>
void parse(benchmark::State& state, const char* text) {
  const bench::CountedAllocations counted(state);
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(Address(text));
  }
}

template <class Address>
void format(benchmark::State& state, const char* text) {
  const Address ip(text);
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(ip.correctForm());
  }
}

constexpr auto BM_parseIPv4 = parse<IPv4>;
constexpr auto BM_parseIPv6 = parse<IPv6>;
constexpr auto BM_parseIPAddress = parse<IPAddress>;
constexpr auto BM_formatIPv4 = format<IPv4>;
constexpr auto BM_formatIPv6 = format<IPv6>;

void BM_inet_pton(benchmark::State& state, int family, const char* text) {
  std::array<std::uint8_t, 16> bytes;
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(inet_pton(family, text, bytes.data()));
    benchmark::DoNotOptimize(bytes);
  }
}

void BM_inet_ntop(benchmark::State& state, int family, const char* text) {
  std::array<std::uint8_t, 16> bytes;
  inet_pton(family, text, bytes.data());
  std::array<char, INET6_ADDRSTRLEN> written;
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(inet_ntop(family, bytes.data(), written.data(), written.size()));
    benchmark::DoNotOptimize(written);
  }
}

void BM_isInSubnet(benchmark::State& state, const char* text, const char* subnet) {
  const IPAddress ip(text);
  const IPAddress other(subnet);
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(ip.isInSubnet(other));
  }
}

BENCHMARK_CAPTURE(BM_parseIPv4, ipv4, kIPv4);
BENCHMARK_CAPTURE(BM_inet_pton, ipv4, AF_INET, kIPv4);
BENCHMARK_CAPTURE(BM_formatIPv4, ipv4, kIPv4);
BENCHMARK_CAPTURE(BM_inet_ntop, ipv4, AF_INET, kIPv4);
BENCHMARK_CAPTURE(BM_parseIPv6, short, kShort);
BENCHMARK_CAPTURE(BM_inet_pton, short, AF_INET6, kShort);
BENCHMARK_CAPTURE(BM_formatIPv6, short, kShort);
BENCHMARK_CAPTURE(BM_inet_ntop, short, AF_INET6, kShort);
BENCHMARK_CAPTURE(BM_parseIPv6, gap, kGap);
BENCHMARK_CAPTURE(BM_inet_pton, gap, AF_INET6, kGap);
BENCHMARK_CAPTURE(BM_formatIPv6, gap, kGap);
BENCHMARK_CAPTURE(BM_inet_ntop, gap, AF_INET6, kGap);
BENCHMARK_CAPTURE(BM_parseIPv6, long, kLong);
BENCHMARK_CAPTURE(BM_inet_pton, long, AF_INET6, kLong);
BENCHMARK_CAPTURE(BM_formatIPv6, long, kLong);
BENCHMARK_CAPTURE(BM_inet_ntop, long, AF_INET6, kLong);
BENCHMARK_CAPTURE(BM_parseIPAddress, long, kLong);
BENCHMARK_CAPTURE(BM_isInSubnet, ipv4, "10.0.0.5", "10.0.0.0/8");
BENCHMARK_CAPTURE(BM_isInSubnet, ipv6, kGap, "2001:db8::/32");

}  // namespace
}  // namespace quillet
