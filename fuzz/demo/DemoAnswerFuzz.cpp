// What the demo filter does with a datagram: at most one answer, which repeats the query's
// identifier and is marked as an answer, and a log of at most one line.

#include <algorithm>
#include <string>

#include "demo/DemoAnswer.h"
#include "demo/QueryLine.h"
#include "fuzz/Target.h"

void quillet::fuzz::run(platform::DataView datagram) {
  const auto query = DnsToolsSocket::Message::deserialize(datagram);
  const auto answer = query ? answerTo(*query) : answerToUndecodable(datagram);
  if (query) {
    std::string line;
    appendQueryLine(line, *query);
    require(line.find('\n') == line.size() - 1);
  }
  if (const auto bytes = answer ? answer->serialize() : platform::Data(); bytes && answer) {
    require(bytes->size() >= 12 &&
            std::equal(bytes->begin(), bytes->begin() + 2, datagram.begin()));
    require(((*bytes)[2] & 0x80) != 0);
  }
}
