// Every datagram gives one result: a message that ends with the one OPT record, in which a walker
// of its own finds the options; where it is no message, or no datagram would carry what it becomes,
// its question octets and the record, or itself.
//
// The first octet says how many of those after it are the text of the second option.

#include <algorithm>
#include <string>

#include "dnscodec/DNSParser.h"
#include "dnscodec/QuestionOctets.h"
#include "fuzz/Target.h"
#include "fuzz/WireWalk.h"
#include "fuzz/dnscodec/WritableNames.h"
#include "tests/support/LogCapture.h"

namespace {

using namespace quillet;
using fuzz::require;
using platform::Data;

/// The injected record as RFC 1035 section 4.1.3 and RFC 6891 section 6.1.2 lay it out.
Data expectedRecord(const Data& value) {
  const auto length = static_cast<std::uint8_t>(value.size());
  const std::size_t blockSize = 5U + 4U + value.size();
  Data record{1,
              '0',
              0,
              0,
              41,
              0,
              0,
              0,
              0,
              0,
              0,
              static_cast<std::uint8_t>(blockSize >> 8),
              static_cast<std::uint8_t>(blockSize)};
  record.insert(record.end(), {0xFD, 0xEF, 0, 1, '1', 0xFD, 0xE9, 0, length});
  record.insert(record.end(), value.begin(), value.end());
  return record;
}

/// `injected` is the datagram itself, or its header and questions with the record.
void requireKept(const Data& datagram, const Data& injected, const Data& record) {
  if (injected == datagram) {
    return;
  }
  const auto entries = fuzz::entriesOf(injected, /*isCompressed=*/true);
  require(injected.size() <= kMaxDatagramSize && entries && entries->last <= datagram.size());
  require(entries->counts == std::array<std::size_t, 4>{datagram[4] * 256U + datagram[5], 0, 0, 1});
  require(entries->last + record.size() == injected.size());
  auto expected = datagram;
  constexpr std::uint8_t kZ = 0x40;
  expected[3] &= static_cast<std::uint8_t>(~kZ);
  std::copy(injected.begin() + 6, injected.begin() + 12, expected.begin() + 6);
  expected.resize(entries->last);
  expected.insert(expected.end(), record.begin(), record.end());
  require(injected == expected);
}

/// Whether the message with its names written in full and this record is one datagram.
bool fitsInFull(DNSMessage message, const Data& record) {
  message.additionalRecords.clear();
  return DNSMessageEncoder::encode(message).size() + record.size() <= kMaxDatagramSize;
}

}  // namespace

void quillet::fuzz::run(platform::DataView input) {
  if (input.empty()) {
    return;
  }
  const test::LogCapture log;  // keeps the run's own output readable
  const auto rest = input.subspan(1);
  const auto split = rest.begin() + std::min<std::ptrdiff_t>(input[0], std::ssize(rest));
  const Data value(rest.begin(), split);
  const Data datagram(split, rest.end());
  const auto injected = DNSParser::injectFlagsTo(datagram, {65007, 65001},
                                                 {"1", std::string(platform::textOf(value))});
  const auto record = expectedRecord(value);
  DNSMessageDecoder decoder;
  decoder.decodeMessageInBuffer(datagram);
  if (!decoder.message || !fitsInFull(DNSParser::checkDnsMessage(*decoder.message), record)) {
    return requireKept(datagram, injected, record);
  }
  require(injected.size() >= 12 + record.size() && injected[10] == 0 && injected[11] == 1);
  require(std::equal(record.rbegin(), record.rend(), injected.rbegin()));
  if (test::hasWritableNames(*decoder.message)) {
    const auto entries = fuzz::entriesOf(injected, /*isCompressed=*/false);
    require(entries && entries->last + record.size() == injected.size());
  }
}
