// What a message may ask of the reader and the writer at most.

#include <gtest/gtest.h>

#include "dns_tools/Message.h"
#include "dns_tools/Record.h"
#include "tests/support/Wire.h"

namespace {

using namespace DnsToolsSocket;
using platform::Data;
using quillet::test::hex;

constexpr std::size_t kLargestMessage = 65535;

void append(Data& bytes, const Data& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

/// A message that begins with `first` in the given section and goes on with as many of `more` as
/// there is room for.
Data filled(std::size_t section, const Data& first, const Data& more) {
  auto bytes = hex("0001 8000 0000 0000 0000 0000");
  append(bytes, first);
  std::size_t count = 1;
  for (; bytes.size() + more.size() <= kLargestMessage; ++count) {
    append(bytes, more);
  }
  bytes[4 + 2 * section] = static_cast<std::uint8_t>(count >> 8);
  bytes[5 + 2 * section] = static_cast<std::uint8_t>(count);
  return bytes;
}

TEST(MessageBounds, TakeEveryMessageOfNamesOf255Octets) {
  // What stands behind a name; in all entries but the first that is a pointer to the first's.
  const struct {
    std::size_t section;
    const char* rest;
  } kCases[] = {
      {0, "0001 0001"},
      {1, "0001 0001 00000000 0004 01020304"},
      {1, "0002 0001 00000000 0002 C00C"},
      {3, "0029 0001 00000000 0000"},
  };
  Data name;
  for (int i = 0; i < 127; ++i) {
    append(name, {1, 'a'});
  }
  name.push_back(0);
  for (const auto& [section, rest] : kCases) {
    auto first = name;
    append(first, hex(rest));
    auto more = hex("C00C");
    append(more, hex(rest));
    const auto message = Message::deserialize(filled(section, first, more));
    ASSERT_TRUE(message) << rest;
    EXPECT_TRUE(message->serialize()) << rest;
  }
}

TEST(MessageBounds, RefuseToWalkALongChainForEachRecord) {
  // A record whose data are the name "a." and 5000 pointers, each to the one before; then records
  // named by the last of them.
  constexpr std::size_t kDataOffset = 23;
  auto chain = hex("00 0029 0001 00000000 2713 01 61 00 C017");
  std::size_t last = kDataOffset + 3;
  for (int i = 1; i < 5000; ++i, last += 2) {
    append(chain, {static_cast<std::uint8_t>(0xC0 | last >> 8), static_cast<std::uint8_t>(last)});
  }
  auto named = hex("C000 0029 0001 00000000 0000");
  named[0] = static_cast<std::uint8_t>(0xC0 | last >> 8);
  named[1] = static_cast<std::uint8_t>(last);

  auto once = hex("0001 8000 0000 0002 0000 0000");
  append(once, chain);
  append(once, named);
  const auto message = Message::deserialize(once);
  ASSERT_TRUE(message);
  EXPECT_EQ(message->answers[1]->name(), "a.");
  const auto refused = Message::deserialize(filled(1, chain, named));
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error(), DecodeError::invalidLabelSize);
}

TEST(MessageBounds, TakeAsManyEntriesAsACountCanTell) {
  const Record record(".", false, 1, 0, 10, {});
  for (const std::size_t count : {65535U, 65536U}) {
    Message messages[4];
    messages[0].questions.assign(count, {".", 1, false, 1});
    messages[1].answers.assign(count, record);
    messages[2].authorities.assign(count, record);
    messages[3].additional.assign(count, record);
    for (const auto& message : messages) {
      const auto written = message.serialize();
      EXPECT_EQ(written.has_value(), count == 65535U);
      EXPECT_TRUE(written || written.error() == EncodeError::tooManyEntries);
    }
  }
}

TEST(MessageBounds, FrameUpTo65535Octets) {
  // A header of 12 octets, 11 before the data.
  for (const std::size_t size : {65535U, 65536U}) {
    Message message;
    message.additional.emplace_back(Record(".", false, 1, 0, 10, Data(size - 12 - 11)));
    const auto framed = message.serializeTCP();
    EXPECT_EQ(framed.has_value(), size == 65535U);
    EXPECT_TRUE(framed ? Message::deserializeTCP(*framed).has_value()
                       : framed.error() == EncodeError::messageTooLong);
  }
}

}  // namespace
