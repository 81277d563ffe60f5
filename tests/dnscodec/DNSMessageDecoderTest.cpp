#include <gtest/gtest.h>

#include "dnscodec/DNSMessageDecoder.h"
#include "dnscodec/DNSMessageEncoder.h"
#include "tests/dnscodec/Samples.h"
#include "tests/support/Wire.h"

namespace quillet {

namespace {

using platform::Data;
using platform::DataView;
using test::hex;

std::optional<DNSMessage> decoded(DataView bytes) {
  DNSMessageDecoder decoder;
  decoder.decodeMessageInBuffer(bytes);
  return std::move(decoder.message);
}

void append(Data& bytes, const Data& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

/// A query whose first question has a name of 255 octets, and that many more that point at it.
Data pointingQuestions(std::uint16_t count) {
  auto bytes = hex("1234 0100 0000 0000 0000 0000");
  const auto questions = static_cast<std::uint16_t>(count + 1);
  bytes[4] = static_cast<std::uint8_t>(questions >> 8);
  bytes[5] = static_cast<std::uint8_t>(questions);
  for (const unsigned length : {63U, 63U, 63U, 61U}) {
    bytes.push_back(static_cast<std::uint8_t>(length));
    bytes.resize(bytes.size() + length, 'x');
  }
  append(bytes, hex("00 0001 0001"));
  for (int i = 0; i < count; ++i) {
    append(bytes, hex("c00c 0001 0001"));
  }
  return bytes;
}

TEST(DNSMessageDecoder, TakesAnAnswerApart) {
  const auto message = decoded(test::sampleAnswer());
  ASSERT_TRUE(message);
  EXPECT_FALSE(message->header.isQuery);
  ASSERT_EQ(message->questions.size(), 1U);
  EXPECT_EQ(*message->questions[0], (DNSQuestion{"www.example.com", 1, 1}));
  ASSERT_EQ(message->answers.size(), 2U);
  EXPECT_EQ(message->answers[0]->name, "www.example.com");
  EXPECT_EQ(message->answers[0]->type, 5);
  EXPECT_EQ(message->answers[0]->ttl, 300U);
  EXPECT_EQ(message->answers[0]->data, hex("03776562 c010"));
  EXPECT_EQ(message->answers[1]->name, "web.example.com");
  EXPECT_EQ(message->answers[1]->data, hex("c0000201"));
  ASSERT_EQ(message->authorityRecords.size(), 1U);
  EXPECT_EQ(message->authorityRecords[0]->name, "example.com");
  ASSERT_EQ(message->additionalRecords.size(), 1U);
  EXPECT_EQ(message->additionalRecords[0]->name, "ns1.example.com");
  EXPECT_EQ(message->additionalRecords[0]->ttl, 86400U);
}

TEST(DNSMessageDecoder, IgnoresWhatIsBehindTheLastRecord) {
  auto bytes = test::sampleAnswer();
  append(bytes, hex("ff"));
  EXPECT_TRUE(decoded(bytes));
}

TEST(DNSMessageDecoder, RefusesEveryCut) {
  for (const auto& bytes : {test::sampleAnswer(), test::sampleQueryWithOpt()}) {
    for (std::size_t size = 0; size < bytes.size(); ++size) {
      EXPECT_FALSE(decoded(DataView(bytes).first(size))) << size;
    }
  }
}

TEST(DNSMessageDecoder, TakesOrRefusesEveryFlippedOctet) {
  const auto bytes = test::sampleAnswer();
  std::size_t taken = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    for (const unsigned flip : {0x01U, 0x40U, 0x80U, 0xC0U, 0xFFU}) {
      auto flipped = bytes;
      flipped[i] = static_cast<std::uint8_t>(flipped[i] ^ flip);
      if (const auto message = decoded(flipped)) {
        EXPECT_GE(DNSMessageEncoder::encode(*message).size(), 12U);
        ++taken;
      }
    }
  }
  EXPECT_GT(taken, bytes.size());
}

TEST(DNSMessageDecoder, RefusesCountsThatLie) {
  struct Row {
    const char* what;
    const char* counts;
    const char* rest;
    bool isTaken;
  };
  const Row rows[] = {
      {"one question", "0001 0000 0000 0000", "00 0001 0001", true},
      {"two, one there", "0002 0000 0000 0000", "00 0001 0001", false},
      {"two, half of one there", "0002 0000 0000 0000", "00 0001 0001 00 00", false},
      {"all questions", "ffff 0000 0000 0000", "00 0001 0001", false},
      {"all answers", "0000 ffff 0000 0000", "00 0001 0001 00000000 0000", false},
      {"all authority records", "0000 0000 ffff 0000", "00 0001 0001 00000000 0000", false},
      {"all additional records", "0000 0000 0000 ffff", "00 0001 0001 00000000 0000", false},
      {"one record", "0000 0000 0000 0001", "00 0001 0001 00000000 0000", true},
      {"one record of too much data", "0000 0000 0000 0001", "00 0001 0001 00000000 ffff", false},
      {"a record too many", "0001 0000 0000 0001", "00 0001 0001", false},
  };
  for (const auto& [what, counts, rest, isTaken] : rows) {
    const auto bytes = hex(std::string("1234 0100 ") + counts + rest);
    EXPECT_EQ(decoded(bytes).has_value(), isTaken) << what;
  }
}

TEST(DNSMessageDecoder, BoundsTheTextOfAllNames) {
  // A name of 4 labels costs its 255 octets less the root's, one that points at it a pointer more.
  constexpr std::size_t kName = 254;
  constexpr std::size_t kMost =
      (DecodeBudget::kTotal - kName) / (DecodeBudget::kPointerCost + kName);
  const auto most = decoded(pointingQuestions(kMost));
  ASSERT_TRUE(most);
  EXPECT_EQ(most->questions.back()->name, most->questions.front()->name);
  EXPECT_FALSE(decoded(pointingQuestions(kMost + 1)));
  EXPECT_FALSE(decoded(pointingQuestions(10000)));
}

TEST(DNSMessageDecoder, BoundsThePointersOfAllNames) {
  // Behind the questions stands a chain of 100 pointers, which every question begins to follow.
  constexpr std::uint16_t kQuestions = 2000;
  constexpr std::uint16_t kChain = 12 + 6 * kQuestions;
  auto bytes = hex("1234 0100 07d0 0000 0000 0000");
  for (int i = 0; i < kQuestions; ++i) {
    append(bytes, {0xC0 | kChain >> 8, kChain & 0xFF, 0, 1, 0, 1});
  }
  for (int i = 1; i < 100; ++i) {
    const int target = kChain + 2 * i;
    append(bytes, {static_cast<std::uint8_t>(0xC0 | target >> 8),
                   static_cast<std::uint8_t>(target & 0xFF)});
  }
  bytes.push_back(0);
  EXPECT_FALSE(decoded(bytes));
  bytes[4] = 0;
  bytes[5] = 100;
  const auto few = decoded(bytes);
  ASSERT_TRUE(few);
  EXPECT_EQ(few->questions.back()->name, ".");
}

}  // namespace

}  // namespace quillet
