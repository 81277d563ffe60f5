#include "dns_tools/NameSuffix.h"

#include <random>

namespace DnsToolsSocket {

namespace {

struct Seeds {
  std::uint64_t label;
  std::uint64_t end;
};

const Seeds& seeds() {
  static const Seeds kSeeds = [] {
    std::random_device device;
    std::uniform_int_distribution<std::uint64_t> number;
    return Seeds{number(device), number(device)};
  }();
  return kSeeds;
}

// Both halves of the full product, folded: every bit of the operands reaches the result.
std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
  __extension__ using Product = unsigned __int128;
  const auto product = static_cast<Product>(a) * b;
  return static_cast<std::uint64_t>(product >> 64) ^ static_cast<std::uint64_t>(product);
}

}  // namespace

std::uint64_t NameSuffix::labelHash(std::string_view label, std::size_t distanceFromEnd) {
  std::uint64_t hash = seeds().label + distanceFromEnd;
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < label.size(); ++i) {
    word = word << 8 | static_cast<unsigned char>(label[i]);
    if (i % sizeof word == sizeof word - 1) {
      hash = mix(hash ^ word, seeds().end);
      word = 0;
    }
  }
  return mix(hash ^ word, seeds().end + label.size());
}

std::uint64_t NameSuffix::nameHash(std::string_view text) {
  std::uint64_t hash = 0;
  while (!text.empty()) {
    const auto label = firstLabel(text);
    hash += labelHash(label, text.size());
    text = withoutFirstLabel(text, label);
  }
  return hash;
}

}  // namespace DnsToolsSocket
