#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace DnsToolsSocket {

/// What is left to write of a name, labels joined by "."; borrows the text.
///
/// Its hash is the sum of the hashes of its labels, each taken with its distance from the name's
/// end. So one pass over the name gives the hashes of all its suffixes: when a label is taken away,
/// its hash is too. The label hashes hang on numbers that each process draws anew, so that nobody
/// can choose names that meet in the dictionary.
class NameSuffix {
 public:
  /// The text may end in one dot more, which does not count.
  explicit NameSuffix(std::string_view name);

  [[nodiscard]] bool empty() const { return text_.empty(); }
  [[nodiscard]] std::string_view text() const { return text_; }
  /// Whether there is nothing before or after some dot.
  [[nodiscard]] bool hasEmptyLabel() const;
  /// Taken when first asked for.
  [[nodiscard]] std::uint32_t hash();

  /// Takes the first label away and gives it.
  std::string_view takeLabel();

 private:
  std::string_view text_;
  std::optional<std::uint64_t> hash_;
};

}  // namespace DnsToolsSocket
