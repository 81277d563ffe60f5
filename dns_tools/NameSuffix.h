#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace DnsToolsSocket {

/// What is left to write of a name, labels joined by ".", with its hash; borrows the text.
///
/// The hash of a name is the sum of the hashes of its labels, each taken with its distance from the
/// name's end. So one pass over the name gives the hashes of all its suffixes: when a label is
/// taken away, its hash is too. The label hashes hang on numbers that each process draws anew, so
/// that nobody can choose names that meet in the dictionary.
class NameSuffix {
 public:
  /// The text may end in one dot more, which does not count.
  explicit NameSuffix(std::string_view name);

  [[nodiscard]] bool empty() const { return text_.empty(); }
  [[nodiscard]] std::string_view text() const { return text_; }
  [[nodiscard]] std::uint64_t hash() const { return hash_; }
  /// Whether there is nothing between two dots, or before the first one.
  [[nodiscard]] bool hasEmptyLabel() const { return hasEmptyLabel_; }

  /// Takes the first label away and gives it.
  std::string_view takeLabel();

 private:
  std::string_view text_;
  std::uint64_t hash_ = 0;
  bool hasEmptyLabel_;
};

}  // namespace DnsToolsSocket
