#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace DnsToolsSocket {

/// The text of a name while it is put together. The usual name is gathered on the stack, so that it
/// is allocated once and at its size.
class NameText {
 public:
  /// Appends a label and its dot.
  void append(std::string_view label) {
    if (label.size() >= sizeof head_ - used_) {
      flush();
      longText_.append(label).push_back('.');
      return;
    }
    used_ += label.copy(head_ + used_, label.size());
    head_[used_++] = '.';
  }

  /// Appends the non-empty pieces of a label, each with its dot.
  void appendPieces(std::string_view label) {
    while (!label.empty()) {
      const auto piece = label.substr(0, label.find('.'));
      if (!piece.empty()) {
        append(piece);
      }
      label.remove_prefix(piece.size() == label.size() ? piece.size() : piece.size() + 1);
    }
  }

  /// The whole text, once; "." when nothing was appended.
  [[nodiscard]] std::string finish() {
    if (longText_.empty()) {
      return used_ == 0 ? "." : std::string(head_, used_);
    }
    flush();
    longText_.shrink_to_fit();
    return std::move(longText_);
  }

 private:
  void flush() {
    longText_.append(head_, used_);
    used_ = 0;
  }

  char head_[256];
  std::size_t used_ = 0;
  std::string longText_;
};

}  // namespace DnsToolsSocket
