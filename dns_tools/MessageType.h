#pragma once

#include <cstdint>

namespace DnsToolsSocket {

/// The QR bit (RFC 1035 section 4.1.1).
enum class MessageType : std::uint8_t { query = 0, response = 1 };

}  // namespace DnsToolsSocket
