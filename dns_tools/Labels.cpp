#include "dns_tools/Labels.h"

#include <utility>

namespace DnsToolsSocket {

namespace {

constexpr std::size_t kFirstSlots = 64;

// The first slot, from the hash's own on, that `wanted` accepts; there is one.
template <class Slots, class Wanted>
auto& probe(Slots& slots, std::uint32_t hash, Wanted wanted) {
  const std::size_t mask = slots.size() - 1;
  std::size_t i = hash & mask;
  while (!wanted(slots[i])) {
    i = (i + 1) & mask;
  }
  return slots[i];
}

template <class Slots, class Entry>
void put(Slots& slots, const Entry& entry) {
  probe(slots, entry.hash, [](const Entry& slot) { return slot.data == nullptr; }) = entry;
}

}  // namespace

const Labels::Entry* Labels::findInSlots(std::string_view text, std::uint32_t hash) const {
  const auto& slot = probe(slots_, hash, [&](const Entry& other) {
    return other.data == nullptr || (other.hash == hash && other.text() == text);
  });
  return slot.data == nullptr ? nullptr : &slot;
}

void Labels::storeInSlots(std::string_view text, NameSuffix& name, std::uint16_t offset) {
  if (slots_.empty()) {
    moveFewToSlots();
  } else if (used_ * 2 == slots_.size()) {
    doubleSlots();
  }
  put(slots_, Entry{text.data(), text.size(), name.hash(), offset});
  ++used_;
}

void Labels::moveFewToSlots() {
  slots_.resize(kFirstSlots);
  for (auto& entry : few_) {
    entry.hash = NameSuffix(entry.text()).hash();
    put(slots_, entry);
  }
}

void Labels::doubleSlots() {
  std::vector<Entry> slots(slots_.size() * 2);
  for (const auto& entry : slots_) {
    if (entry.data != nullptr) {
      put(slots, entry);
    }
  }
  slots_ = std::move(slots);
}

std::string_view Labels::keep(std::string text) { return kept_.emplace_front(std::move(text)); }

}  // namespace DnsToolsSocket
