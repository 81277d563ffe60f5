// What decodes is the same when it is written and decoded again, and its names stay within the
// budget of a message. Every datagram gives one result: a message that ends with the one OPT
// record, in which a walker of its own finds the options; where it is no message, or no datagram
// would carry what it becomes, its question octets and the record, or itself.
//
// The first octet says how many of those after it are the text of the second option.

#include <algorithm>
#include <string>

#include "dnscodec/DNSParser.h"
#include "dnscodec/QuestionOctets.h"
#include "fuzz/Target.h"
#include "fuzz/WireWalk.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Wire.h"

namespace quillet::fuzz {

using platform::Data;
using platform::DataView;

std::optional<DNSMessage> decoded(DataView bytes) {
  DNSMessageDecoder decoder;
  decoder.decodeMessageInBuffer(bytes);
  return std::move(decoder.message);
}

std::vector<std::string> namesOf(const DNSMessage& message) {
  std::vector<std::string> names;
  const auto add = [&names](const auto& entry) { names.push_back(entry->name); };
  std::ranges::for_each(message.questions, add);
  for (const auto* section :
       {&message.answers, &message.authorityRecords, &message.additionalRecords}) {
    std::ranges::for_each(*section, add);
  }
  return names;
}

/// Whether a name can be read again as it is written. One with an empty piece cannot, since that
/// reads as the end: labels may hold dots, and a pointer to the root adds one.
bool isWritable(const std::string& name) {
  return name == "." || ("." + name + ".").find("..") == std::string::npos;
}

void requireSound(const DNSMessage& message, DataView datagram) {
  std::size_t size = 0;
  std::ranges::for_each(namesOf(message), [&](const auto& name) { size += name.size(); });
  // Each name that costs nothing is a root, which takes an octet of the message.
  require(size <= DecodeBudget::kTotal + datagram.size());
  if (std::ranges::all_of(namesOf(message), isWritable)) {
    const auto written = DNSMessageEncoder::encode(message);
    const auto again = decoded(written);
    require(again && message.header == again->header &&
            DNSMessageEncoder::encode(*again) == written);
  }
}

/// The injected record as RFC 1035 section 4.1.3 and RFC 6891 section 6.1.2 lay it out.
Data expectedRecord(const Data& value) {
  auto record = test::hex("01 30 00 0029 0000 00000000 0000 fdef 0001 31 fde9 0000");
  record[11] = static_cast<std::uint8_t>((9 + value.size()) >> 8);
  record[12] = static_cast<std::uint8_t>(9 + value.size());
  record.back() = static_cast<std::uint8_t>(value.size());
  record.insert(record.end(), value.begin(), value.end());
  return record;
}

/// Whether the message with its names written in full and this record is one datagram.
bool fitsInFull(DNSMessage message, const Data& record) {
  message.additionalRecords.clear();
  return DNSMessageEncoder::encode(message).size() + record.size() <= kMaxDatagramSize;
}

void run(platform::DataView input) {
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
  auto message = decoded(datagram);
  if (message) {
    requireSound(*message, datagram);
  }
  const bool isWritten = message && fitsInFull(DNSParser::checkDnsMessage(*message), record);
  if (injected == datagram && !isWritten) {
    return;
  }
  require(injected.size() >= 12 + record.size() && numberAt(injected, 10) == 1);
  require(std::equal(record.rbegin(), record.rend(), injected.rbegin()));
  if (!isWritten || std::ranges::all_of(namesOf(*message), isWritable)) {
    const auto entries = entriesOf(injected, /*isCompressed=*/!isWritten);
    require(entries && entries->last + record.size() == injected.size());
    const auto size = std::min(entries->last, datagram.size()) - 12;
    require(isWritten || std::ranges::equal(DataView(injected).subspan(12, size),
                                            DataView(datagram).subspan(12, size)));
  }
}

}  // namespace quillet::fuzz
