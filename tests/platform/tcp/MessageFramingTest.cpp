#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/tcp/MessageFraming.h"

namespace platform {
namespace {

using namespace std::string_literals;

using Texts = std::vector<std::string>;

TEST(MessageFramingTest, GivesWhatIsWholeHoweverItComes) {
  const auto large = std::string(65535, 'x');
  const struct {
    std::string octets;
    Texts messages;
  } rows[] = {
      {"", {}},
      {"\0"s, {}},
      {"\0\1"s, {}},
      {"\0\1a"s, {"a"}},
      {"\0\0"s, {""}},
      {"\0\0\0\1a\0\0"s, {"", "a", ""}},
      {"\0\2ab\0\3cde\0\2f"s, {"ab", "cde"}},
      {"\1\0"s + std::string(255, 'a'), {}},
      {"\1\0"s + std::string(256, 'a') + "\0\1b\0"s, {std::string(256, 'a'), "b"}},
      {"\xff\xff"s + large + "\xff\xff"s + large, {large, large}},
  };
  for (const auto& [octets, messages] : rows) {
    for (const std::size_t step : {1U, 2U, 3U, 1000U, 200'000U}) {
      MessageFraming framing;
      Texts found;
      for (std::size_t at = 0; at < octets.size(); at += step) {
        framing.append(bytesOf(std::string_view(octets).substr(at, step)));
        for (auto next = framing.next(); next; next = framing.next()) {
          found.emplace_back(textOf(*next));
        }
      }
      EXPECT_EQ(found, messages) << octets.substr(0, 20) << " by " << step;
    }
  }
}

TEST(MessageFramingTest, PutsTheLengthInFront) {
  EXPECT_EQ(textOf(MessageFraming::framed(bytesOf("")).value()), "\0\0"s);
  EXPECT_EQ(textOf(MessageFraming::framed(bytesOf("abc")).value()), "\0\3abc"s);
  EXPECT_EQ(textOf(MessageFraming::framed(Data(65535, 'x')).value()),
            "\xff\xff"s + std::string(65535, 'x'));
  EXPECT_FALSE(MessageFraming::framed(Data(65536)));
}

}  // namespace
}  // namespace platform
