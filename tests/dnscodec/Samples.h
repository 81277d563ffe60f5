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

/// www.example.com AAAA as a stub resolver asks, by dnspython: an OPT record with a payload size of
/// 4096, DO and a cookie.
inline platform::Data sampleQueryWithOpt() {
  return hex(
      "1234 0100 0001 0000 0000 0001 03777777 076578616d706c65 03636f6d 00 001c 0001"
      "00 0029 1000 00008000 000c 000a 0008 0123456789abcdef");
}

}  // namespace quillet::test
