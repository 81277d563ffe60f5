#pragma once

#include <cstdint>

namespace DnsToolsSocket {

/// A class as it stands on the wire, its top bit a flag of its own (RFC 6762 section 10.2).
class ClassWord {
 public:
  explicit constexpr ClassWord(std::uint16_t word) : word_(word) {}
  constexpr ClassWord(bool unique, std::uint16_t internetClass)
      : word_(static_cast<std::uint16_t>(internetClass | (unique ? kUnique : 0))) {}

  [[nodiscard]] constexpr std::uint16_t word() const { return word_; }
  [[nodiscard]] constexpr bool unique() const { return (word_ & kUnique) != 0; }
  [[nodiscard]] constexpr std::uint16_t internetClass() const {
    return static_cast<std::uint16_t>(word_ & ~kUnique);
  }

 private:
  static constexpr unsigned kUnique = 0x8000;

  std::uint16_t word_;
};

}  // namespace DnsToolsSocket
