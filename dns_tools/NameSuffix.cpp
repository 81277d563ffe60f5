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

struct HashedLabel {
  std::size_t size;
  std::uint64_t hash;
};

// The label up to the first dot, or the end, of `text`.
HashedLabel firstLabel(std::string_view text, const Seeds& seeds) {
  std::uint64_t hash = seeds.label + text.size();
  std::uint64_t word = 0;
  std::size_t size = 0;
  for (; size < text.size() && text[size] != '.'; ++size) {
    word = word << 8 | static_cast<unsigned char>(text[size]);
    if (size % 8 == 7) {
      hash = mix(hash ^ word, seeds.end);
      word = 0;
    }
  }
  return {size, mix(hash ^ word, seeds.end + size)};
}

std::string_view withoutLabel(std::string_view text, std::size_t size) {
  text.remove_prefix(size == text.size() ? size : size + 1);
  return text;
}

}  // namespace

NameSuffix::NameSuffix(std::string_view name)
    : text_(name.substr(0, name.size() - (name.ends_with('.') ? 1 : 0))),
      hasEmptyLabel_(text_.ends_with('.')) {
  for (auto rest = text_; !rest.empty();) {
    const auto label = firstLabel(rest, seeds());
    hash_ += label.hash;
    hasEmptyLabel_ |= label.size == 0;
    rest = withoutLabel(rest, label.size);
  }
}

std::string_view NameSuffix::takeLabel() {
  const auto [size, hash] = firstLabel(text_, seeds());
  const auto label = text_.substr(0, size);
  hash_ -= hash;
  text_ = withoutLabel(text_, size);
  return label;
}

}  // namespace DnsToolsSocket
