// What it costs to give a one-question query nine options of about 20 octets, beside ldns and
// libknot doing the same work on the same bytes.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <optional>

#include "bench/Allocations.h"
#include "dnscodec/DNSParser.h"
#include "platform/log/LogSink.h"

// clang-format off: ldns defines `bool`, so that the C headers come last
#include <ldns/ldns.h>
extern "C" {
#include <libknot/libknot.h>
}
// clang-format on

namespace {

using platform::Data;
using quillet::DNSParser;
namespace bench = quillet::bench;

// id 0x1234, RD; www.example.com. A IN
const Data kQuery{0x12, 0x34, 0x01, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00,
                  0x00, 3,    'w',  'w',  'w',  7,    'e',  'x',  'a',  'm',  'p',
                  'l',  'e',  3,    'c',  'o',  'm',  0,    0,    1,    0,    1};

const std::vector<std::uint16_t> kCodes{65001, 65002, 65003, 65004, 65005,
                                        65006, 65007, 65010, 65011};
const std::string kValue = "twenty octets, about";
const std::vector<std::string> kValues(kCodes.size(), kValue);

constexpr std::size_t kBlockSize = 9UL * 24;
// Owner name "0" for ours, the root for theirs.
constexpr std::size_t kInjectedSize = 33 + 13 + kBlockSize;
constexpr std::size_t kPlainOptSize = 33 + 11 + kBlockSize;

/// Drops every record: what is measured is the work on bytes and the making of the log texts.
struct NullSink final : platform::LogSink {
  void write(std::string_view text) override { benchmark::DoNotOptimize(text.data()); }
};

void useNullSink() { platform::LogSink::setShared(std::make_unique<NullSink>()); }

void require(bool condition, benchmark::State& state) {
  if (!condition) {
    state.SkipWithError("the work was not done");
  }
}

void BM_Inject(benchmark::State& state) {
  useNullSink();
  const bench::CountedAllocations counted(state);
  for ([[maybe_unused]] const auto _ : state) {
    const auto injected = DNSParser::injectFlagsTo(kQuery, kCodes, kValues);
    require(injected.size() == kInjectedSize, state);
    benchmark::DoNotOptimize(injected.data());
  }
}
BENCHMARK(BM_Inject);

void BM_InjectLdns(benchmark::State& state) {
  for ([[maybe_unused]] const auto _ : state) {
    ldns_pkt* packet = nullptr;
    ldns_wire2pkt(&packet, kQuery.data(), kQuery.size());
    ldns_edns_option_list* options = ldns_edns_option_list_new();
    for (const auto code : kCodes) {
      ldns_edns_option_list_push(
          options, ldns_edns_new_from_data(static_cast<ldns_edns_option_code>(code), kValue.size(),
                                           kValue.data()));
    }
    ldns_pkt_set_edns_option_list(packet, options);
    std::uint8_t* bytes = nullptr;
    std::size_t size = 0;
    ldns_pkt2wire(&bytes, packet, &size);
    require(size == kPlainOptSize, state);
    benchmark::DoNotOptimize(bytes);
    std::free(bytes);  // NOLINT(cppcoreguidelines-no-malloc): the library allocates it so
    ldns_pkt_free(packet);
  }
}
BENCHMARK(BM_InjectLdns);

using KnotPacket = std::unique_ptr<knot_pkt_t, decltype(&knot_pkt_free)>;

void BM_InjectKnot(benchmark::State& state) {
  auto query = kQuery;
  for ([[maybe_unused]] const auto _ : state) {
    const KnotPacket parsed(
        knot_pkt_new(query.data(), static_cast<std::uint16_t>(query.size()), nullptr),
        knot_pkt_free);
    knot_pkt_parse(parsed.get(), 0);
    knot_rrset_t opt;
    knot_edns_init(&opt, 0, 0, 0, nullptr);
    for (const auto code : kCodes) {
      knot_edns_add_option(&opt, code, static_cast<std::uint16_t>(kValue.size()),
                           reinterpret_cast<const std::uint8_t*>(kValue.data()), nullptr);
    }
    const KnotPacket packet(knot_pkt_new(nullptr, 512, nullptr), knot_pkt_free);
    knot_wire_set_id(packet->wire, knot_wire_get_id(parsed->wire));
    knot_wire_set_flags1(packet->wire, knot_wire_get_flags1(parsed->wire));
    knot_pkt_put_question(packet.get(), knot_pkt_qname(parsed.get()), knot_pkt_qclass(parsed.get()),
                          knot_pkt_qtype(parsed.get()));
    knot_pkt_begin(packet.get(), KNOT_ADDITIONAL);
    knot_pkt_put(packet.get(), KNOT_COMPR_HINT_NONE, &opt, 0);
    require(packet->size == kPlainOptSize, state);
    benchmark::DoNotOptimize(packet->wire);
    knot_rrset_clear(&opt, nullptr);
  }
}
BENCHMARK(BM_InjectKnot);

/// As every query meets it: the options from a dictionary, all log texts made.
void BM_InjectDatagramsLogged(benchmark::State& state) {
  useNullSink();
  std::optional<DNSParser::Flags> flags(std::in_place);
  for (const auto code : kCodes) {
    (*flags)[std::to_string(code)] = kValue;
  }
  const std::vector<Data> batch{kQuery};
  const bench::CountedAllocations counted(state);
  for ([[maybe_unused]] const auto _ : state) {
    const auto injected = DNSParser::injectFlagsToDatagrams(batch, flags);
    require(injected.front().size() == kInjectedSize, state);
    benchmark::DoNotOptimize(injected.data());
  }
}
BENCHMARK(BM_InjectDatagramsLogged);

}  // namespace
