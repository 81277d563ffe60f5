#include <netinet/in.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "platform/senders/SocketDiagnosis.h"
#include "platform/senders/SocketTable.h"
#include "tests/platform/Test.h"

namespace {

/// What the next requests to the kernel fail with; 0 for none.
int refusal = 0;
/// Whether requests name a protocol that the kernel has no such interface for, and how many have.
bool isWithoutModule = false;
int requests = 0;

}  // namespace

// A program's own functions come before those of the C library.
extern "C" ssize_t sendto(int socket, const void* bytes, size_t size, int flags,
                          const sockaddr* address, socklen_t addressSize) {
  if (refusal != 0) {
    errno = refusal;
    return -1;
  }
  const auto* const first = static_cast<const std::uint8_t*>(bytes);
  platform::Data request(first, first + size);
  if (isWithoutModule && size > 17) {
    ++requests;
    request[17] = IPPROTO_IGMP;
  }
  return ::syscall(SYS_sendto, socket, request.data(), size, flags, address, addressSize);
}

namespace platform::test {

// Numbers of the kernel's own stand in the order of this machine's octets; the bytes below are
// little-endian. A message is a header (length, type 20, flags, sequence 7, port), an inet_diag_msg
// and its attributes.

constexpr std::uint32_t kSequence = 7;
const std::string kHeader = " 1400 0000 07000000 01000000 ";
/// An unbound UDP socket of IPv4: user 1000, inode 0x61931, cgroup 0x1234, of an odd shutdown
/// state.
const std::string kUnbound =
    "74000000" + kHeader +
    "02070000  9813 0000 00000000000000000000000000000000 00000000000000000000000000000000"
    "00000000 45010000 02000000  00000000 00000000 00000000 e8030000 31190600"
    "0500 0800 00000000  0c00 1500 3412000000000000  0800 0f00 00000000";
/// A connected one of both families, which stands for IPv4, and without a cgroup.
const std::string kMapped =
    "60000000" + kHeader +
    "0a010000  9813 14b4 00000000000000000000ffff7f000001 00000000000000000000ffff7f000009"
    "00000000 46010000 00000000  00000000 00000000 00000000 00000000 32190600"
    "0500 1200 00000000";
const std::string kDone = "14000000 0300 0200 07000000 01000000 00000000";
const std::string kNoEntry =
    "24000000 0200 0000 07000000 01000000 feffffff 4c000000 1400 0100 07000000 00000000";

TEST(SocketDiagnosis, ReadsTheKernelsAnswer) {
  auto other = hex(kUnbound);
  other[8] = 6;  // of an earlier request
  const auto bytes = hex(kUnbound + kMapped + kDone);
  other.insert(other.end(), bytes.begin(), bytes.end());
  const auto [sockets, isComplete, error] = socket_diagnosis::read(other, kSequence);
  ASSERT_EQ(sockets.size(), 2U);
  EXPECT_TRUE(isComplete);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(description(sockets[0].local), "0.0.0.0:38931");
  EXPECT_EQ(description(sockets[1].local), "127.0.0.1:38931");
  EXPECT_EQ(description(sockets[1].remote), "127.0.0.9:5300");
  EXPECT_EQ(sockets[0].owner, (SocketOwner{1000, 0x61931, 0x200000145, 0x1234}));
  EXPECT_EQ(sockets[1].owner, (SocketOwner{0, 0x61932, 0x146, std::nullopt}));
}

TEST(SocketDiagnosis, AnErrorIsTheKernelsOrThatItMakesNoSense) {
  const std::pair<std::string, int> rows[] = {
      {kNoEntry, ENOENT},
      {"14000000 0300 0200 07000000 01000000 fcffffff", EINTR},
      {"14000000 0200 0000 07000000 01000000 01000000", EBADMSG},  // positive
      {"14000000 0200 0000 07000000 01000000 00000080", EBADMSG},  // no errno value
      {"10000000 1500 0000 07000000 01000000", EBADMSG},           // of another type
      {"f0ffffff 1400 0000 07000000 01000000", EBADMSG},           // longer than all there is
      {"0f000000 1400 0000 07000000 01000000", EBADMSG},           // shorter than a header
      {"11000000 1400 0000 06000000 01000000 00", EBADMSG},        // without its padding
  };
  for (const auto& [bytes, error] : rows) {
    const auto answer = socket_diagnosis::read(hex(bytes), kSequence);
    EXPECT_EQ(answer.error, error) << bytes;
    EXPECT_TRUE(answer.isComplete && answer.sockets.empty()) << bytes;
  }
}

/// A table of sockets over a kernel that refuses.
class RefusedSocketTableTest : public testing::Test {
 protected:
  RefusedSocketTableTest() { clock_.advanceSeconds(1); }

  void expectNothingFound() {
    for (int i = 0; i < 3; ++i) {
      EXPECT_FALSE(table_.exact(path_));
      EXPECT_FALSE(table_.exact(std::vector(2, path_))[1]);
      EXPECT_FALSE(table_.byPort(client_));
    }
  }

  const LogCapture log_;
  SharedClock clock_;
  const SocketAddress client_ = address("127.0.0.1", 9);
  const SocketPath path_{Transport::udp, client_, client_, 1};
  SocketTable table_;
};

TEST_F(RefusedSocketTableTest, WritesOneLineUntilTheKernelAnswersAgain) {
  Texts lines;
  for (const int error : {EPERM, EPERM, ENOBUFS}) {
    refusal = error;
    expectNothingFound();
    refusal = 0;
    table_.exact(path_);
    lines.push_back("SocketTable: the kernel does not tell whose sockets are: " +
                    std::error_code(error, std::generic_category()).message());
    EXPECT_EQ(log_.records(), lines);
  }
}

TEST_F(RefusedSocketTableTest, RarelyAsksAKernelWithoutTheInterface) {
  isWithoutModule = true;
  expectNothingFound();
  EXPECT_EQ(requests, 1);
  clock_.advanceSeconds(60);
  expectNothingFound();
  EXPECT_EQ(requests, 2);
  EXPECT_THAT(log_.records(), SizeIs(1));
  isWithoutModule = false;
}

}  // namespace platform::test
