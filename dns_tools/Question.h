#pragma once

#include <cstdint>
#include <string>

namespace DnsToolsSocket {

class Reader;
class Writer;

/// An entry of the question section; built member by member, in this order.
struct Question {
  /// The next question of a message; unusable when the reader fails.
  static Question read(Reader& reader);

  void write(Writer& writer) const;
  void describe(std::string& out) const;

  std::string name;
  std::uint16_t type = 0;
  /// The top bit of the class word (RFC 6762 section 5.4); read, never written.
  bool unique = false;
  std::uint16_t internetClass = 0;
};

}  // namespace DnsToolsSocket
