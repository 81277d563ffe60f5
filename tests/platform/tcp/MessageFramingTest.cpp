#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/tcp/MessageFraming.h"

namespace platform {
namespace {

using namespace std::string_literals;

// The fuzz target shows that pieces make no difference.
TEST(MessageFramingTest, GivesWhatIsWhole) {
  const std::pair<std::string, std::vector<std::string>> rows[] = {
      {"\0"s, {}},
      {"\0\1"s, {}},
      {"\0\0\0\1a\0\0"s, {"", "a", ""}},
      {"\0\2ab\0\3cde\0\2f"s, {"ab", "cde"}},
      {"\1\0"s + std::string(255, 'a'), {}},
      {"\1\0"s + std::string(256, 'a') + "\0\1b\0"s, {std::string(256, 'a'), "b"}},
      {"\xff\xff"s + std::string(65535, 'x') + "\xff"s, {std::string(65535, 'x')}},
  };
  for (const auto& [octets, messages] : rows) {
    MessageFraming framing;
    framing.append(bytesOf(octets));
    for (const auto& message : messages) {
      EXPECT_EQ(textOf(framing.next().value()), message);
      const auto framed = MessageFraming::framed(bytesOf(message)).value();
      EXPECT_NE(octets.find(textOf(framed)), std::string::npos);
    }
    EXPECT_FALSE(framing.next());
  }
  EXPECT_FALSE(MessageFraming::framed(Data(65536)));
}

}  // namespace
}  // namespace platform
