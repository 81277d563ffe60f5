#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <forward_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "dns_tools/NameSuffix.h"

namespace DnsToolsSocket {

/// The compression dictionary of one message: which text was written as a name, or as the rest of
/// one, at which offset. Texts are told apart character for character.
class Labels {
 public:
  /// Offsets from here on do not fit a compression pointer (RFC 1035 section 4.1.4).
  static constexpr std::size_t kOffsetLimit = 0x4000;

  /// Keeps a copy of each name.
  Labels() = default;
  /// Borrows the texts: the records written with it must outlive it.
  static Labels borrowing() { return Labels(false); }

  Labels(const Labels&) = delete;
  Labels& operator=(const Labels&) = delete;
  Labels(Labels&&) = delete;
  Labels& operator=(Labels&&) = delete;
  ~Labels() = default;

  /// The offset of `text`, which reads as `name` does, or with empty labels more; null when it is
  /// not there.
  [[nodiscard]] const std::uint16_t* find(std::string_view text, NameSuffix& name) const;

  /// Stores a text that is not there, unless `offset` cannot be pointed to. Borrows it.
  void store(std::string_view text, NameSuffix& name, std::size_t offset);

  /// The text to store in place of a name that is written from `offset` on, and of its suffixes;
  /// absent when the name itself will do.
  std::optional<std::string_view> copyOf(std::string_view name, std::size_t offset);

  /// Keeps a text that no record holds for as long as the dictionary lives.
  std::string_view keep(std::string text);

 private:
  struct Entry {
    const char* data;  // null in a free slot
    std::size_t size;
    std::uint32_t hash;  // among the few: not taken yet
    std::uint16_t offset;

    [[nodiscard]] std::string_view text() const { return {data, size}; }
  };

  [[nodiscard]] const Entry* findAmongFew(std::string_view text) const;
  [[nodiscard]] const Entry* findInSlots(std::string_view text, std::uint32_t hash) const;
  void storeInSlots(std::string_view text, NameSuffix& name, std::uint16_t offset);
  explicit Labels(bool keepsNames) : keepsNames_(keepsNames) {}

  void moveFewToSlots();
  void doubleSlots();

  // The usual answer has few texts, and to look at each is faster than to take hashes. The first
  // one too many moves them to slots: open addressing, a power of two of them, at most half of them
  // in use.
  std::array<Entry, 16> few_;
  std::vector<Entry> slots_;
  std::size_t used_ = 0;
  const bool keepsNames_ = true;
  std::forward_list<std::string> kept_;
};

inline const std::uint16_t* Labels::find(std::string_view text, NameSuffix& name) const {
  const auto* entry = slots_.empty() ? findAmongFew(text) : findInSlots(text, name.hash());
  return entry == nullptr ? nullptr : &entry->offset;
}

inline const Labels::Entry* Labels::findAmongFew(std::string_view text) const {
  const auto* end = few_.data() + used_;
  for (const auto* entry = few_.data(); entry != end; ++entry) {
    if (entry->text() == text) {
      return entry;
    }
  }
  return nullptr;
}

inline void Labels::store(std::string_view text, NameSuffix& name, std::size_t offset) {
  if (offset >= kOffsetLimit) {
    return;
  }
  const auto target = static_cast<std::uint16_t>(offset);
  if (slots_.empty() && used_ < few_.size()) {
    few_[used_++] = {text.data(), text.size(), 0, target};
  } else {
    storeInSlots(text, name, target);
  }
}

inline std::optional<std::string_view> Labels::copyOf(std::string_view name, std::size_t offset) {
  return keepsNames_ && offset < kOffsetLimit ? std::optional(keep(std::string(name)))
                                              : std::nullopt;
}

}  // namespace DnsToolsSocket
