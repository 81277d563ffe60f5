// What one query and one answer cost, beside ldns and libknot doing the same work on the same
// bytes.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <span>

#include "bench/Allocations.h"
#include "dns_tools/Message.h"

// clang-format off: ldns defines `bool`, so that the C headers come last
#include <ldns/ldns.h>
extern "C" {
#include <libknot/libknot.h>
}
// clang-format on

namespace {

using DnsToolsSocket::Message;
namespace bench = quillet::bench;

// id 0x1234, RD; www.example.com. A IN
const std::array<std::uint8_t, 33> kQuery{
    0x12, 0x34, 0x01, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 3, 'w', 'w', 'w', 7,
    'e',  'x',  'a',  'm',  'p',  'l',  'e',  3,    'c',  'o',  'm',  0,    0, 1,   0,   1};

// www.example.com. CNAME web.cdn.example.net., two A of that, OPT; compressed as dnspython does.
const std::array<std::uint8_t, 109> kAnswer{
    0x12, 0x34, 0x81, 0x80, 0,   1,   0,    3,   0,   0,    0,    1,   3,   'w', 'w', 'w',
    7,    'e',  'x',  'a',  'm', 'p', 'l',  'e', 3,   'c',  'o',  'm', 0,   0,   1,   0,
    1,    0xC0, 12,   0,    5,   0,   1,    0,   0,   0x01, 0x2C, 0,   21,  3,   'w', 'e',
    'b',  3,    'c',  'd',  'n', 7,   'e',  'x', 'a', 'm',  'p',  'l', 'e', 3,   'n', 'e',
    't',  0,    0xC0, 0x2D, 0,   1,   0,    1,   0,   0,    0,    60,  0,   4,   192, 0,
    2,    10,   0xC0, 0x2D, 0,   1,   0,    1,   0,   0,    0,    60,  0,   4,   192, 0,
    2,    11,   0,    0,    41,  4,   0xD0, 0,   0,   0,    0,    0,   0};

void require(bool condition, benchmark::State& state) {
  if (!condition) {
    state.SkipWithError("the work was not done");
  }
}

void BM_QueryDecode(benchmark::State& state) {
  const bench::CountedAllocations counted(state);
  for ([[maybe_unused]] auto _ : state) {
    auto message = Message::deserialize(kQuery);
    require(message && message->questions.size() == 1, state);
    benchmark::DoNotOptimize(message);
  }
}
BENCHMARK(BM_QueryDecode);

using LdnsPacket = std::unique_ptr<ldns_pkt, decltype(&ldns_pkt_free)>;

LdnsPacket ldnsDecode(std::span<const std::uint8_t> bytes) {
  ldns_pkt* packet = nullptr;
  ldns_wire2pkt(&packet, bytes.data(), bytes.size());
  return {packet, ldns_pkt_free};
}

void BM_QueryDecodeLdns(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    const auto packet = ldnsDecode(kQuery);
    require(packet && ldns_pkt_qdcount(packet.get()) == 1, state);
    benchmark::DoNotOptimize(packet.get());
  }
}
BENCHMARK(BM_QueryDecodeLdns);

using KnotPacket = std::unique_ptr<knot_pkt_t, decltype(&knot_pkt_free)>;

// libknot lowers letters in place, so it gets a copy of the bytes.
template <std::size_t Size>
KnotPacket knotDecode(std::array<std::uint8_t, Size>& bytes) {
  KnotPacket packet(knot_pkt_new(bytes.data(), static_cast<std::uint16_t>(Size), nullptr),
                    knot_pkt_free);
  if (knot_pkt_parse(packet.get(), 0) != KNOT_EOK) {
    packet.reset();
  }
  return packet;
}

void BM_QueryDecodeKnot(benchmark::State& state) {
  auto bytes = kQuery;
  for ([[maybe_unused]] auto _ : state) {
    const auto packet = knotDecode(bytes);
    require(packet && knot_pkt_qtype(packet.get()) == KNOT_RRTYPE_A, state);
    benchmark::DoNotOptimize(packet.get());
  }
}
BENCHMARK(BM_QueryDecodeKnot);

void BM_AnswerDecodeEncode(benchmark::State& state) {
  const bench::CountedAllocations counted(state);
  for ([[maybe_unused]] auto _ : state) {
    const auto message = Message::deserialize(kAnswer);
    const auto bytes = message->serialize();
    require(bytes && bytes->size() == kAnswer.size(), state);
    benchmark::DoNotOptimize(bytes->data());
  }
}
BENCHMARK(BM_AnswerDecodeEncode);

void BM_AnswerDecodeEncodeLdns(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    const auto packet = ldnsDecode(kAnswer);
    std::uint8_t* bytes = nullptr;
    std::size_t size = 0;
    ldns_pkt2wire(&bytes, packet.get(), &size);
    require(size == kAnswer.size(), state);
    benchmark::DoNotOptimize(bytes);
    std::free(bytes);  // NOLINT(cppcoreguidelines-no-malloc): the library allocates it so
  }
}
BENCHMARK(BM_AnswerDecodeEncodeLdns);

KnotPacket knotEncode(const knot_pkt_t& parsed) {
  KnotPacket packet(knot_pkt_new(nullptr, 512, nullptr), knot_pkt_free);
  knot_wire_set_id(packet->wire, knot_wire_get_id(parsed.wire));
  knot_wire_set_flags1(packet->wire, knot_wire_get_flags1(parsed.wire));
  knot_wire_set_flags2(packet->wire, knot_wire_get_flags2(parsed.wire));
  knot_pkt_put_question(packet.get(), knot_pkt_qname(&parsed), knot_pkt_qclass(&parsed),
                        knot_pkt_qtype(&parsed));
  for (const auto id : {KNOT_ANSWER, KNOT_AUTHORITY, KNOT_ADDITIONAL}) {
    knot_pkt_begin(packet.get(), id);
    const auto* section = knot_pkt_section(&parsed, id);
    for (std::uint16_t i = 0; i < section->count; ++i) {
      knot_pkt_put(packet.get(), KNOT_COMPR_HINT_NONE, knot_pkt_rr(section, i), 0);
    }
  }
  return packet;
}

void BM_AnswerDecodeEncodeKnot(benchmark::State& state) {
  auto bytes = kAnswer;
  for ([[maybe_unused]] auto _ : state) {
    const auto parsed = knotDecode(bytes);
    const auto packet = knotEncode(*parsed);
    require(packet->size == kAnswer.size(), state);
    benchmark::DoNotOptimize(packet->wire);
  }
}
BENCHMARK(BM_AnswerDecodeEncodeKnot);

void BM_AnswerDecode(benchmark::State& state) {
  const bench::CountedAllocations counted(state);
  for ([[maybe_unused]] auto _ : state) {
    const auto message = Message::deserialize(kAnswer);
    benchmark::DoNotOptimize(message->answers.data());
  }
}
BENCHMARK(BM_AnswerDecode);
void BM_AnswerEncode(benchmark::State& state) {
  const auto message = Message::deserialize(kAnswer);
  const bench::CountedAllocations counted(state);
  for ([[maybe_unused]] auto _ : state) {
    const auto bytes = message->serialize();
    benchmark::DoNotOptimize(bytes->data());
  }
}
BENCHMARK(BM_AnswerEncode);

void BM_AnswerDescription(benchmark::State& state) {
  const auto message = Message::deserialize(kAnswer);
  std::string text;
  const bench::CountedAllocations counted(state);
  for ([[maybe_unused]] auto _ : state) {
    text.clear();
    message->describe(text);
    benchmark::DoNotOptimize(text.data());
  }
}
BENCHMARK(BM_AnswerDescription);

}  // namespace
