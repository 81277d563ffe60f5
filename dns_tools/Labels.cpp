#include "dns_tools/Labels.h"

#include <utility>

namespace DnsToolsSocket {

namespace {

// The slot in which `isMatch` holds, or the free one where it would have to be.
template <class Slot, class IsMatch>
Slot& probe(std::span<Slot> slots, std::uint64_t hash, IsMatch isMatch) {
  const std::size_t mask = slots.size() - 1;
  for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
    if (slots[i].text == nullptr || isMatch(slots[i])) {
      return slots[i];
    }
  }
}

}  // namespace

std::optional<std::uint16_t> Labels::findOrStore(std::string_view text, std::uint64_t hash,
                                                 std::size_t offset) {
  auto& slot = probe(slots_, hash, [&](const Slot& other) {
    return other.hash == hash && std::string_view(other.text, other.size) == text;
  });
  if (slot.text != nullptr) {
    return slot.offset;
  }
  if (offset < kOffsetLimit) {
    slot = {text.data(), hash, text.size(), static_cast<std::uint16_t>(offset)};
    if (++used_ > slots_.size() / 4 * 3) {
      grow();
    }
  }
  return std::nullopt;
}

void Labels::grow() {
  std::vector<Slot> slots(slots_.size() * 2);
  for (const auto& slot : slots_) {
    if (slot.text != nullptr) {
      probe(std::span(slots), slot.hash, [](const Slot&) { return false; }) = slot;
    }
  }
  moreSlots_ = std::move(slots);
  slots_ = moreSlots_;
}

std::string_view Labels::keep(std::string text) { return kept_.emplace_front(std::move(text)); }

}  // namespace DnsToolsSocket
