// Nothing is read beyond the answer: it is the same at the end of another one of an earlier
// request.

#include "fuzz/Target.h"
#include "platform/senders/SocketDiagnosis.h"

void quillet::fuzz::run(platform::DataView input) {
  constexpr std::uint32_t kSequence = 7;  // of the corpus
  platform::Data longer{16, 0, 0, 0, 20, 0, 0, 0, 6, 0, 0, 0, 0, 0, 0, 0};
  longer.insert(longer.end(), input.begin(), input.end());
  const platform::Data bytes(input.begin(), input.end());  // aligned
  const auto answer = platform::socket_diagnosis::read(bytes, kSequence);
  const auto same = platform::socket_diagnosis::read(longer, kSequence);
  require(answer.error == 0 || answer.isComplete);
  require(answer.error == same.error && answer.isComplete == same.isComplete);
  require(answer.sockets.size() == same.sockets.size());
  for (std::size_t i = 0; i < same.sockets.size(); ++i) {
    require(answer.sockets[i].owner == same.sockets[i].owner);
  }
}
