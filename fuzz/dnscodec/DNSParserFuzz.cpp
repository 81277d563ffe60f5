// Every datagram gives one result: a message that ends with the one OPT record, in which a walker
// of its own finds the options; where it is no message, or no datagram would carry what it becomes,
// its question octets and the record, or itself.
//
// The first octet says how many of those behind it are the text of the second option.

#include <algorithm>
#include <string>
#include <vector>

#include "dnscodec/DNSMessage.h"
#include "dnscodec/DNSParser.h"
#include "dnscodec/QuestionOctets.h"
#include "fuzz/Require.h"
#include "fuzz/WireWalk.h"
#include "fuzz/dnscodec/WritableNames.h"
#include "tests/support/LogCapture.h"

namespace {

using namespace quillet;
using fuzz::require;
using platform::Data;

/// The injected record as RFC 1035 section 4.1.3 and RFC 6891 section 6.1.2 lay it out.
Data expectedRecord(const std::string& value) {
  const auto length = static_cast<std::uint8_t>(value.size());
  Data record{1, '0', 0, 0, 41, 0, 0, 0, 0, 0, 0};
  const std::size_t blockSize = 5U + 4U + value.size();
  record.push_back(static_cast<std::uint8_t>(blockSize >> 8));
  record.push_back(static_cast<std::uint8_t>(blockSize));
  record.insert(record.end(), {0xFD, 0xEF, 0, 1, '1', 0xFD, 0xE9, 0, length});
  record.insert(record.end(), value.begin(), value.end());
  return record;
}

/// Whether `injected` is the datagram itself, or its header and questions with the record.
void requireKept(const Data& datagram, const Data& injected, const Data& record) {
  if (injected == datagram) {
    return;
  }
  require(injected.size() <= kMaxDatagramSize);
  const auto entries = fuzz::entriesOf(injected, /*isCompressed=*/true);
  require(entries && entries->counts[0] == datagram[4] * 256U + datagram[5]);
  require(entries->counts[1] == 0 && entries->counts[2] == 0 && entries->counts[3] == 1);
  require(entries->last + record.size() == injected.size() && entries->last <= datagram.size());
  require(std::equal(record.rbegin(), record.rend(), injected.rbegin()));
  const platform::DataView questions(injected.data() + 12, entries->last - 12);
  require(
      std::ranges::equal(questions, platform::DataView(datagram).subspan(12, questions.size())));
  constexpr int kZ = 0x40;
  require(injected[3] == (datagram[3] & ~kZ));
  require(std::equal(datagram.begin(), datagram.begin() + 3, injected.begin()));
}

/// Octets of the message with its names written in full, and without additional records.
std::size_t sizeWrittenInFull(DNSMessage message) {
  message.additionalRecords.clear();
  return DNSMessageEncoder::encode(message).size();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  const test::LogCapture log;  // keeps the run's own output readable
  const std::size_t valueSize = std::min<std::size_t>(data[0], size - 1);
  const std::string value(data + 1, data + 1 + valueSize);
  const Data datagram(data + 1 + valueSize, data + size);
  const auto injected = DNSParser::injectFlagsTo(datagram, {65007, 65001}, {"1", value});

  DNSMessageDecoder decoder;
  decoder.decodeMessageInBuffer(datagram);
  const auto record = expectedRecord(value);
  if (!decoder.message) {
    requireKept(datagram, injected, record);
    return 0;
  }
  const auto& checked = DNSParser::checkDnsMessage(*decoder.message);
  if (sizeWrittenInFull(checked) + record.size() > kMaxDatagramSize) {
    requireKept(datagram, injected, record);
    return 0;
  }
  require(injected.size() >= 12 + record.size());
  require(injected[10] == 0 && injected[11] == 1);
  require(std::equal(record.rbegin(), record.rend(), injected.rbegin()));
  if (test::hasWritableNames(checked)) {
    const auto entries = fuzz::entriesOf(injected, /*isCompressed=*/false);
    require(entries && entries->counts[3] == 1);
    require(entries->last + record.size() == injected.size());
  }
  return 0;
}
