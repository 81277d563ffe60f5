#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace platform {

/// Holds the two halves of a network address as the Network framework names them.
struct NWEndpoint {
  /// The text form of an IP address; not checked before a connection uses it.
  class Host {
   public:
    explicit Host(std::string text) : text_(std::move(text)) {}
    [[nodiscard]] const std::string& text() const { return text_; }
    void describe(std::string& out) const { out.append(text_); }

   private:
    std::string text_;
  };

  class Port {
   public:
    explicit constexpr Port(std::uint16_t value) : rawValue(value) {}
    void describe(std::string& out) const { out.append(std::to_string(rawValue)); }

    std::uint16_t rawValue;
  };
};

}  // namespace platform
