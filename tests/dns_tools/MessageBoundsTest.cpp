// What a message may ask of the reader and the writer at most.

#include "dns_tools/Message.h"
#include "dns_tools/Record.h"
#include "tests/support/Test.h"

namespace DnsToolsSocket::test {

using namespace quillet::test;

void append(Data& bytes, const Data& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

Data pointer(std::size_t offset) {
  return {static_cast<std::uint8_t>(0xC0 | offset >> 8), static_cast<std::uint8_t>(offset)};
}

/// A message that begins with `first` in the given section and goes on with `most` of `more`, or as
/// many as there is room for.
Data filled(std::size_t section, const Data& first, const Data& more, std::size_t most = 65534) {
  auto bytes = hex("0001 8000 0000 0000 0000 0000");
  append(bytes, first);
  std::size_t count = 1;
  for (; count <= most && bytes.size() + more.size() <= 65535; ++count) {
    append(bytes, more);
  }
  bytes[4 + 2 * section] = static_cast<std::uint8_t>(count >> 8);
  bytes[5 + 2 * section] = static_cast<std::uint8_t>(count);
  return bytes;
}

TEST(MessageBounds, TakeEveryMessageOfNamesOf255Octets) {
  // What comes after a name; in all entries but the first that is a pointer to the first's.
  const std::pair<std::size_t, const char*> rows[] = {
      {0, "0001 0001"}, {1, "0002 0001 00000000 0002 C00C"}, {3, "0029 0001 00000000 0000"}};
  for (const auto& [section, rest] : rows) {
    Data first;
    for (int i = 0; i < 127; ++i) {
      append(first, {1, 'a'});
    }
    append(first, hex(std::string("00") + rest));
    const auto message =
        Message::deserialize(filled(section, first, hex(std::string("C00C") + rest)));
    EXPECT_TRUE(message && message->serialize()) << rest;
  }
}

TEST(MessageBounds, RefuseToWalkALongChainForEachRecord) {
  // A record whose data are the name "a." and 5000 pointers, each to the one before; then records
  // named by the last of them.
  constexpr std::size_t kName = 23;
  auto chain = hex("00 0029 0001 00000000 2713 01 61 00 C017");
  std::size_t last = kName + 3;
  for (int i = 1; i < 5000; ++i, last += 2) {
    append(chain, pointer(last));
  }
  auto named = pointer(last);
  append(named, hex("0029 0001 00000000 0000"));
  const auto message = Message::deserialize(filled(1, chain, named, 1));
  ASSERT_TRUE(message);
  EXPECT_EQ(message->answers[1]->name(), "a.");
  const auto refused = Message::deserialize(filled(1, chain, named));
  EXPECT_TRUE(!refused && refused.error() == DecodeError::invalidLabelSize);
}

TEST(MessageBounds, TakeWhatACountAndALengthCanTell) {
  for (const std::size_t excess : {0U, 1U}) {
    Message many;
    many.questions.assign(65535 + excess, {".", 1, false, 1});
    many.additional.assign(65535 + excess, Record(".", false, 1, 0, 10, {}));
    const auto written = many.serialize();
    EXPECT_TRUE(written ? excess == 0
                        : excess == 1 && written.error() == EncodeError::tooManyEntries);
    Message large;  // a header of 12 octets, 11 before the data
    large.additional.emplace_back(Record(".", false, 1, 0, 10, Data(65535 + excess - 12 - 11)));
    const auto framed = large.serializeTCP();
    EXPECT_TRUE(framed ? excess == 0 && Message::deserializeTCP(*framed).has_value()
                       : excess == 1 && framed.error() == EncodeError::messageTooLong);
  }
}

}  // namespace DnsToolsSocket::test
