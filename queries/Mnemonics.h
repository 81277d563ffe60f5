#pragma once

#include <cstdint>
#include <string>

namespace quillet {

/// The usual mnemonic of a record type (`AAAA`, `HTTPS`), `TYPE65280` where there is none (RFC 3597
/// section 5).
std::string typeMnemonic(std::uint16_t type);

/// That of an RCODE (`NXDOMAIN`), the extended ones (RFC 6891) too; `RCODE23` where there is none.
std::string rcodeMnemonic(std::uint16_t rcode);

}  // namespace quillet
