#pragma once

#include <cstddef>
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
  explicit NameSuffix(std::string_view name)
      : text_(name.substr(0, name.size() - (name.ends_with('.') ? 1 : 0))) {}

  [[nodiscard]] bool empty() const { return text_.empty(); }
  [[nodiscard]] std::string_view text() const { return text_; }
  /// Whether there is nothing before or after some dot.
  [[nodiscard]] bool hasEmptyLabel() const;
  /// Taken when first asked for.
  [[nodiscard]] std::uint32_t hash() {
    if (!hash_) {
      hash_ = nameHash(text_);
    }
    return static_cast<std::uint32_t>(*hash_);
  }

  /// Takes the first label away and gives it.
  std::string_view takeLabel();

 private:
  static std::string_view firstLabel(std::string_view text);
  static std::string_view withoutFirstLabel(std::string_view text, std::string_view label);
  static std::uint64_t labelHash(std::string_view label, std::size_t distanceFromEnd);
  static std::uint64_t nameHash(std::string_view text);

  std::string_view text_;
  std::optional<std::uint64_t> hash_;
};

// Labels are short: these loops take less time than calls of the C library for each of them.

inline bool NameSuffix::hasEmptyLabel() const {
  char previous = '.';
  for (const char c : text_) {
    if (c == '.' && previous == '.') {
      return true;
    }
    previous = c;
  }
  return previous == '.' && !text_.empty();
}

inline std::string_view NameSuffix::firstLabel(std::string_view text) {
  std::size_t size = 0;
  while (size < text.size() && text[size] != '.') {
    ++size;
  }
  return text.substr(0, size);
}

inline std::string_view NameSuffix::withoutFirstLabel(std::string_view text,
                                                      std::string_view label) {
  text.remove_prefix(label.size() == text.size() ? label.size() : label.size() + 1);
  return text;
}

inline std::string_view NameSuffix::takeLabel() {
  const auto label = firstLabel(text_);
  if (hash_) {
    *hash_ -= labelHash(label, text_.size());
  }
  text_ = withoutFirstLabel(text_, label);
  return label;
}

}  // namespace DnsToolsSocket
