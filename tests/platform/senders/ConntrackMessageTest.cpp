#include <cerrno>

#include "platform/senders/ConntrackMessage.h"
#include "tests/platform/Test.h"

namespace platform::test {

// Netlink's headers and attributes are in the byte order of the machine, a little-endian one here.

/// CTA_TUPLE_REPLY: from 127.0.0.1:5300 to 192.0.2.9:52836.
const std::string kReplies =
    "3400 0280  1400 0180 0800 0100 7f000001 0800 0200 c0000209"
    "1c00 0280 0500 0100 11000000 0600 0200 14b40000 0600 0300 ce640000";
/// IPCTNL_MSG_CT_GET of sequence 7, AF_INET.
const Data kRequest = hex("48000000 0101 0100 07000000 00000000  02000000" + kReplies);
/// IPCTNL_MSG_CT_NEW, CTA_TUPLE_ORIG: what Linux 6.1 and later answers, without the attributes that
/// follow the tuples.
const Data kAnswer =
    hex("80000000 0001 0200 07000000 00000000  02000000"
        "3400 0180  1400 0180 0800 0100 c0000209 0800 0200 08080404"
        "1c00 0280 0500 0100 11000000 0600 0200 9c400000 0600 0300 00350000" +
        kReplies + "0400 0300");
/// NLMSG_ERROR, -ENOENT.
const Data kNotFound =
    hex("24000000 0200 0000 07000000 00000000 feffffff 48000000 0101 0100 07000000 00000000");

Data changed(Data bytes, std::size_t at, std::uint8_t value) {
  bytes.at(at) = value;
  return bytes;
}

TEST(ConntrackMessageTest, AsksForTheExchangeOfRepliesAndReadsTheAddressesBeforeTranslation) {
  EXPECT_EQ(conntrackRequest(address("192.0.2.9", 52836), address("127.0.0.1", 5300), 7), kRequest);
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
      {"half an address", changed(kAnswer, 28, 6), EBADMSG}};
  for (const auto& [what, answer, error] : rows) {
    EXPECT_EQ(readConntrackAnswer(answer, 7).error().value(), error) << what;
  }
}

}  // namespace platform::test
