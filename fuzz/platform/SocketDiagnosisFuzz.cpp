// Nothing is read beyond the answer: it is the same at the end of another one of an earlier
// request, and what comes after its end or its error is of no account.

#include "fuzz/Target.h"
#include "platform/senders/SocketDiagnosis.h"

namespace {

using platform::Data;
using platform::socket_diagnosis::Answer;

// Of the corpus.
constexpr std::uint32_t kSequence = 7;

void requireSame(const Answer& one, const Answer& other) {
  using quillet::fuzz::require;
  require(one.sockets.size() == other.sockets.size() && one.error == other.error &&
          one.isComplete == other.isComplete);
  for (std::size_t i = 0; i < one.sockets.size(); ++i) {
    require(one.sockets[i].owner == other.sockets[i].owner);
  }
}

}  // namespace

void quillet::fuzz::run(platform::DataView input) {
  const Data bytes(input.begin(), input.end());  // aligned
  const auto answer = platform::socket_diagnosis::read(bytes, kSequence);
  require(answer.error == 0 || answer.isComplete);
  require(answer.sockets.size() <= bytes.size() / 88);
  Data longer{16, 0, 0, 0, 20, 0, 0, 0, 6, 0, 0, 0, 0, 0, 0, 0};
  longer.insert(longer.end(), bytes.begin(), bytes.end());
  requireSame(platform::socket_diagnosis::read(longer, kSequence), answer);
  if (answer.isComplete && answer.error != EBADMSG) {
    longer.insert(longer.end(), 3, 0xFF);
    requireSame(platform::socket_diagnosis::read(longer, kSequence), answer);
  }
}
