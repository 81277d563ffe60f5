#include <cerrno>

#include "platform/senders/ConntrackMessage.h"
#include "tests/platform/Socket.h"
#include "tests/platform/Test.h"

namespace platform::test {

// Netlink's headers and attributes are in the byte order of the machine, a little-endian one here.
// clang-format off
const Data kRequest = {
    0x48, 0, 0, 0, 0x01, 1, 0x01, 0, 7, 0, 0, 0, 0, 0, 0, 0,  // IPCTNL_MSG_CT_GET, sequence 7
    2, 0, 0, 0,                                               // AF_INET
    0x34, 0, 2, 0x80,                                         // CTA_TUPLE_REPLY
    0x14, 0, 1, 0x80, 8, 0, 1, 0, 127, 0, 0, 1, 8, 0, 2, 0, 192, 0, 2, 9,
    0x1c, 0, 2, 0x80, 5, 0, 1, 0, 17, 0, 0, 0, 6, 0, 2, 0, 0x14, 0xb4, 0, 0,
    6, 0, 3, 0, 0xce, 0x64, 0, 0};
// What Linux 6.1 and later answers, without the attributes that follow the tuples.
const Data kAnswer = {
    0x80, 0, 0, 0, 0x00, 1, 0x02, 0, 7, 0, 0, 0, 0, 0, 0, 0,  // IPCTNL_MSG_CT_NEW
    2, 0, 0, 0,
    0x34, 0, 1, 0x80,                                         // CTA_TUPLE_ORIG
    0x14, 0, 1, 0x80, 8, 0, 1, 0, 192, 0, 2, 9, 8, 0, 2, 0, 8, 8, 4, 4,
    0x1c, 0, 2, 0x80, 5, 0, 1, 0, 17, 0, 0, 0, 6, 0, 2, 0, 0x9c, 0x40, 0, 0,
    6, 0, 3, 0, 0, 53, 0, 0,
    0x34, 0, 2, 0x80,                                         // CTA_TUPLE_REPLY
    0x14, 0, 1, 0x80, 8, 0, 1, 0, 127, 0, 0, 1, 8, 0, 2, 0, 192, 0, 2, 9,
    0x1c, 0, 2, 0x80, 5, 0, 1, 0, 17, 0, 0, 0, 6, 0, 2, 0, 0x14, 0xb4, 0, 0,
    6, 0, 3, 0, 0xce, 0x64, 0, 0,
    4, 0, 3, 0};
const Data kNotFound = {
    0x24, 0, 0, 0, 2, 0, 0, 0, 7, 0, 0, 0, 0, 0, 0, 0,        // NLMSG_ERROR
    0xfe, 0xff, 0xff, 0xff,                                   // -ENOENT
    0x48, 0, 0, 0, 0x01, 1, 0x01, 0, 7, 0, 0, 0, 0, 0, 0, 0};
// clang-format on

Data changed(Data bytes, std::size_t at, std::uint8_t value) {
  bytes.at(at) = value;
  return bytes;
}

TEST(ConntrackMessageTest, AsksForTheExchangeWhoseRepliesGoToTheClient) {
  EXPECT_EQ(conntrackRequest(address("192.0.2.9", 52836), address("127.0.0.1", 5300), 7), kRequest);
}

TEST(ConntrackMessageTest, ReadsTheAddressesBeforeTranslation) {
  const auto read = readConntrackAnswer(kAnswer, 7);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->source, address("192.0.2.9", 40000));
  EXPECT_EQ(read->destination, address("8.8.4.4", 53));
}

TEST(ConntrackMessageTest, RefusesWhatIsNoAnswer) {
  const std::tuple<const char*, Data, int> rows[] = {
      {"not found", kNotFound, ENOENT},
      {"a positive number", changed(kNotFound, 19, 0), EBADMSG},
      {"an error that no errno value is", changed(kNotFound, 19, 0x80), EBADMSG},
      {"another request's", changed(kAnswer, 8, 6), ENOMSG},
      {"another message of the subsystem", changed(kAnswer, 4, 2), EBADMSG},
      {"a message longer than the datagram", changed(kAnswer, 0, 0x84), EBADMSG},
      {"a message shorter than its header", changed(kAnswer, 0, 15), EBADMSG},
      {"no original tuple", changed(kAnswer, 22, 9), EBADMSG},
      {"an attribute longer than its nest", changed(kAnswer, 24, 0xff), EBADMSG},
      {"half an address", changed(kAnswer, 28, 6), EBADMSG},
  };
  for (const auto& [what, answer, error] : rows) {
    EXPECT_EQ(readConntrackAnswer(answer, 7).error().value(), error) << what;
  }
}

}  // namespace platform::test
