// The input's first octet says in which pieces the others come. The messages, framed again, are
// what came, and what is left over is less than one.

#include <algorithm>

#include "fuzz/Target.h"
#include "platform/tcp/MessageFraming.h"

void quillet::fuzz::run(platform::DataView input) {
  if (input.empty()) {
    return;
  }
  require(!platform::MessageFraming::framed(platform::Data(65'536)));  // 65,535 is in the corpus
  platform::MessageFraming framing;
  platform::Data again;
  for (auto rest = input.subspan(1); !rest.empty();) {
    const auto size = std::min<std::size_t>(input[0] + 1U, rest.size());
    framing.append(rest.first(size));
    rest = rest.subspan(size);
    while (const auto message = framing.next()) {
      const auto framed = platform::MessageFraming::framed(*message).value();
      again.insert(again.end(), framed.begin(), framed.end());
    }
  }
  const auto octets = input.subspan(1);
  require(again.size() <= octets.size() && std::equal(again.begin(), again.end(), octets.begin()));
  const auto left = octets.subspan(again.size());
  require(left.size() < 2 || left.size() - 2 < left[0] * 256UL + left[1]);
}
