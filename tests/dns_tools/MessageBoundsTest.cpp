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

void setCount(Data& bytes, std::size_t section, std::size_t count) {
  bytes[4 + 2 * section] = static_cast<std::uint8_t>(count >> 8);
  bytes[5 + 2 * section] = static_cast<std::uint8_t>(count);
}

/// A message that begins with `first` in the given section and goes on with as many of `more` as
/// there is room for.
Data filled(std::size_t section, const Data& first, const Data& more) {
  auto bytes = hex("0001 8000 0000 0000 0000 0000");
  append(bytes, first);
  std::size_t count = 1;
  for (; bytes.size() + more.size() <= kLargestMessage; ++count) {
    append(bytes, more);
  }
  setCount(bytes, section, count);
  return bytes;
}

/// `labels` labels of `size` octets and the root.
Data wireNameOf(std::size_t labels, std::size_t size) {
  Data bytes;
  for (std::size_t i = 0; i < labels; ++i) {
    bytes.push_back(static_cast<std::uint8_t>(size));
    bytes.insert(bytes.end(), size, 'a');
  }
  bytes.push_back(0);
  return bytes;
}

Data followedBy(Data bytes, const char* more) {
  append(bytes, hex(more));
  return bytes;
}

TEST(MessageBounds, TakeEveryMessageOfNamesOf255Octets) {
  const struct {
    const char* what;
    std::size_t section;
    Data first;
    Data more;
  } kCases[] = {
      {"questions", 0, followedBy(wireNameOf(127, 1), "0001 0001"), hex("C00C 0001 0001")},
      {"addresses", 1, followedBy(wireNameOf(127, 1), "0001 0001 00000000 0004 01020304"),
       hex("C00C 0001 0001 00000000 0004 01020304")},
      {"name servers", 1, followedBy(wireNameOf(127, 1), "0002 0001 00000000 0002 C00C"),
       hex("C00C 0002 0001 00000000 0002 C00C")},
      {"records without data", 3, followedBy(wireNameOf(2, 126), "0029 0001 00000000 0000"),
       hex("C00C 0029 0001 00000000 0000")},
  };
  for (const auto& [what, section, first, more] : kCases) {
    const auto message = Message::deserialize(filled(section, first, more));
    ASSERT_TRUE(message) << what;
    EXPECT_TRUE(message->serialize()) << what;
  }
}

/// A record of an unknown type that holds `data`; the first of a message, its data begins at
/// offset 23.
Data recordOf(const Data& data) {
  auto bytes = hex("00 0029 0001 00000000 0000");
  bytes[9] = static_cast<std::uint8_t>(data.size() >> 8);
  bytes[10] = static_cast<std::uint8_t>(data.size());
  append(bytes, data);
  return bytes;
}

/// A record without data whose name is a pointer.
Data recordNamed(std::size_t offset) {
  auto bytes = hex("C000 0029 0001 00000000 0000");
  bytes[0] = static_cast<std::uint8_t>(0xC0 | offset >> 8);
  bytes[1] = static_cast<std::uint8_t>(offset);
  return bytes;
}

constexpr std::size_t kDataOffset = 23;

/// The name "a." and 5000 pointers, each to the one before.
Data pointerChain() {
  auto chain = hex("01 61 00 C017");
  for (int i = 1; i < 5000; ++i) {
    const std::size_t previous = kDataOffset + chain.size() - 2;
    chain.push_back(static_cast<std::uint8_t>(0xC0 | previous >> 8));
    chain.push_back(static_cast<std::uint8_t>(previous));
  }
  return chain;
}

TEST(MessageBounds, RefuseToWalkALongChainForEachRecord) {
  const auto chain = pointerChain();
  const std::size_t last = kDataOffset + chain.size() - 2;
  auto once = hex("0001 8000 0000 0002 0000 0000");
  append(once, recordOf(chain));
  append(once, recordNamed(last));
  const auto message = Message::deserialize(once);
  ASSERT_TRUE(message);
  EXPECT_EQ(message->answers[1]->name(), "a.");

  const auto often = filled(1, recordOf(chain), recordNamed(last));
  EXPECT_EQ(Message::deserialize(often).error(), DecodeError::invalidLabelSize);
}

TEST(MessageBounds, TakeAsManyEntriesAsACountCanTell) {
  const Record record(".", false, 1, 0, 10, {});
  for (const std::size_t count : {65535U, 65536U}) {
    Message questions;
    questions.questions.assign(count, {".", 1, false, 1});
    Message answers;
    answers.answers.assign(count, record);
    Message authorities;
    authorities.authorities.assign(count, record);
    Message additional;
    additional.additional.assign(count, record);
    for (const auto* message : {&questions, &answers, &authorities, &additional}) {
      const auto written = message->serialize();
      EXPECT_EQ(written.has_value(), count == 65535U);
      if (!written) {
        EXPECT_EQ(written.error(), EncodeError::tooManyEntries);
      }
    }
  }
}

TEST(MessageBounds, FrameUpTo65535Octets) {
  // A header of 12 octets, 11 before the data.
  for (const std::size_t size : {65535U, 65536U}) {
    Message message;
    message.additional.emplace_back(Record(".", false, 1, 0, 10, Data(size - 12 - 11)));
    ASSERT_EQ(message.serialize()->size(), size);
    const auto framed = message.serializeTCP();
    EXPECT_EQ(framed.has_value(), size == 65535U);
    if (framed) {
      EXPECT_TRUE(Message::deserializeTCP(*framed));
    } else {
      EXPECT_EQ(framed.error(), EncodeError::messageTooLong);
    }
  }
}

}  // namespace
