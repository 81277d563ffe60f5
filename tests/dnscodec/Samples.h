#pragma once

#include "tests/support/Wire.h"

namespace quillet::test {

/// www.example.com A with its answer, as dnspython writes it: a CNAME to web.example.com, its
/// address, the name server and the server's address, names compressed.
inline platform::Data sampleAnswer() {
  return hex(
      "abcd 81a0 0001 0002 0001 0001 03777777 076578616d706c65 03636f6d 00 0001 0001"
      "c00c 0005 0001 0000012c 0006 03776562c010"
      "c02d 0001 0001 0000003c 0004 c0000201"
      "c010 0002 0001 00015180 0006 036e7331c010"
      "c04f 0001 0001 00015180 0004 c0000235");
}

/// A query whose first question has a name of 255 octets, and `count` more that point at it.
inline platform::Data pointingQuestions(std::size_t count) {
  auto bytes = hex("1234 0100 0000 0000 0000 0000");
  bytes[4] = static_cast<std::uint8_t>((count + 1) >> 8);
  bytes[5] = static_cast<std::uint8_t>(count + 1);
  for (const unsigned length : {63U, 63U, 63U, 61U}) {
    bytes.push_back(static_cast<std::uint8_t>(length));
    bytes.resize(bytes.size() + length, 'x');
  }
  bytes.insert(bytes.end(), {0, 0, 1, 0, 1});
  for (std::size_t i = 0; i < count; ++i) {
    bytes.insert(bytes.end(), {0xC0, 12, 0, 1, 0, 1});
  }
  return bytes;
}

}  // namespace quillet::test
