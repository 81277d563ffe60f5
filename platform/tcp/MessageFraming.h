#pragma once

#include <cstddef>
#include <optional>

#include "platform/base/Data.h"

namespace platform {

/// Takes the octets of a TCP connection apart into DNS messages: each stands after its length in
/// two octets (RFC 1035, section 4.2.2; RFC 7766, section 8). Messages are not looked into.
class MessageFraming {
 public:
  /// As much as a length can say, octets.
  static constexpr std::size_t kMaxMessage = 65535;

  /// The message after its length; absent for one that is longer than a length can say.
  static std::optional<Data> framed(DataView message);

  /// Takes octets as they arrive, in whatever pieces.
  void append(DataView octets);
  /// The next message, possibly an empty one; absent when it is not whole yet.
  std::optional<Data> next();

 private:
  [[nodiscard]] DataView rest() const { return DataView(octets_).subspan(taken_); }
  void take(std::size_t count);

  Data octets_;
  std::size_t taken_ = 0;  // of octets_, from the front
};

}  // namespace platform
