// What the demo filter does with a datagram: at most one answer, which repeats the query's
// identifier and is marked as an answer, and a log of at most one line.

#include <algorithm>
#include <string>

#include "demo/DemoAnswer.h"
#include "demo/QueryLine.h"
#include "fuzz/Require.h"

using quillet::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const platform::DataView datagram(data, size);
  const auto query = DnsToolsSocket::Message::deserialize(datagram);
  const auto answer = query ? quillet::answerTo(*query) : quillet::answerToUndecodable(datagram);
  if (query) {
    std::string line;
    quillet::appendQueryLine(line, *query);
    require(std::count(line.begin(), line.end(), '\n') == 1 && line.back() == '\n');
  }
  if (!answer) {
    return 0;
  }
  if (const auto bytes = answer->serialize()) {
    require(bytes->size() >= 12 && std::equal(data, data + 2, bytes->begin()));
    require(((*bytes)[2] & 0x80) != 0);
  }
  return 0;
}
