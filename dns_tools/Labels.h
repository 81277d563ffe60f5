#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <forward_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace DnsToolsSocket {

/// The compression dictionary of one message: which text was written as a name, or as the rest of
/// one, at which offset. Texts are told apart character for character.
///
/// Texts are borrowed: the records written with a dictionary must outlive it.
class Labels {
 public:
  /// Offsets from here on do not fit a compression pointer (RFC 1035 section 4.1.4).
  static constexpr std::size_t kOffsetLimit = 0x4000;

  Labels() = default;
  Labels(const Labels&) = delete;
  Labels& operator=(const Labels&) = delete;
  Labels(Labels&&) = delete;
  Labels& operator=(Labels&&) = delete;
  ~Labels() = default;

  /// The offset that `text` is stored under. A text that is not there yet is stored with `offset`,
  /// unless that cannot be pointed to. Equal texts come with equal hashes.
  std::optional<std::uint16_t> findOrStore(std::string_view text, std::uint64_t hash,
                                           std::size_t offset);

  /// Keeps a text that no record holds for as long as the dictionary lives.
  std::string_view keep(std::string text);

 private:
  struct Slot {
    const char* text = nullptr;  // null in a free slot
    std::uint64_t hash = 0;
    std::size_t size = 0;
    std::uint16_t offset = 0;
  };

  void grow();

  // Open addressing; a power of two of slots, at most three quarters of them in use. The first ones
  // suffice for the usual answer.
  std::array<Slot, 16> firstSlots_;
  std::vector<Slot> moreSlots_;
  std::span<Slot> slots_{firstSlots_};
  std::size_t used_ = 0;
  std::forward_list<std::string> kept_;
};

}  // namespace DnsToolsSocket
