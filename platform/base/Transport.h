#pragma once

namespace platform {

/// What carries a query.
enum class Transport { udp, tcp };

}  // namespace platform
