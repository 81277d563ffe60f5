#pragma once

#include <tl/expected.hpp>

#include "control_client/ControlClient.h"
#include "control_client/Failure.h"

namespace quilletctl {

/// Shows what the proxy does until a key, SIGINT, SIGTERM or SIGHUP ends it; fails when the proxy
/// goes away. The terminal is as it was afterwards. No other thread runs meanwhile.
tl::expected<void, Failure> runTop(ControlClient& client);

}  // namespace quilletctl
