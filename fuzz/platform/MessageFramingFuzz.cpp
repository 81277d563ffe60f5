// The input's first octet says in which pieces the others come. The messages are the same as when
// all octets are looked at where they lie, and what they are made of, framed again, is what came.

#include <algorithm>
#include <vector>

#include "fuzz/Target.h"
#include "platform/tcp/MessageFraming.h"

namespace {

using platform::Data;
using platform::DataView;
using platform::MessageFraming;
using quillet::fuzz::require;

/// Pieces of 1, 2, ... octets up to `longest`, and again.
std::vector<Data> inPieces(DataView octets, std::size_t longest) {
  MessageFraming framing;
  std::vector<Data> messages;
  for (std::size_t step = 0; !octets.empty(); step = (step + 1) % longest) {
    const auto size = std::min(step + 1, octets.size());
    framing.append(octets.first(size));
    octets = octets.subspan(size);
    while (auto message = framing.next()) {
      messages.push_back(*std::move(message));
    }
  }
  require(!framing.next());
  return messages;
}

std::vector<Data> atOnce(DataView octets) {
  std::vector<Data> messages;
  while (octets.size() >= 2 && octets.size() - 2 >= octets[0] * 256UL + octets[1]) {
    const auto message = octets.subspan(2, octets[0] * 256UL + octets[1]);
    messages.emplace_back(message.begin(), message.end());
    octets = octets.subspan(2 + message.size());
  }
  return messages;
}

}  // namespace

void quillet::fuzz::run(platform::DataView input) {
  if (input.empty()) {
    return;
  }
  const auto octets = input.subspan(1);
  const auto messages = inPieces(octets, input[0] + 1UL);
  require(messages == atOnce(octets));
  Data again;
  for (const auto& message : messages) {
    const auto framed = MessageFraming::framed(message).value();
    again.insert(again.end(), framed.begin(), framed.end());
  }
  require(std::equal(again.begin(), again.end(), octets.begin()));
}
