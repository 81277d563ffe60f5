// Every datagram gives one result: itself when it is no message, or when no datagram would carry
// what it becomes; else a message that ends with the one OPT record, in which a walker of its own
// finds the options.
//
// The first octet says how many of those behind it are the text of the second option.

#include <algorithm>
#include <string>
#include <vector>

#include "dnscodec/DNSMessageDecoder.h"
#include "dnscodec/DNSMessageEncoder.h"
#include "dnscodec/DNSParser.h"
#include "fuzz/Require.h"
#include "fuzz/WireWalk.h"
#include "fuzz/dnscodec/WritableNames.h"
#include "tests/support/LogCapture.h"

namespace {

using namespace quillet;
using fuzz::require;
using platform::Data;

/// What UDP over IPv4 carries, octets.
constexpr std::size_t kMaxDatagramSize = 65'507;

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
  if (!decoder.message) {
    require(injected == datagram);
    return 0;
  }
  const auto record = expectedRecord(value);
  const auto& checked = DNSParser::checkDnsMessage(*decoder.message);
  if (sizeWrittenInFull(checked) + record.size() > kMaxDatagramSize) {
    require(injected == datagram);
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
