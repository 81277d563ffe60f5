#pragma once

#include <tl/expected.hpp>

#include "control_client/ControlClient.h"
#include "control_client/Failure.h"

namespace quilletctl {

/// Prints each query as it is answered, one line, until the proxy goes away, which is the failure.
tl::expected<void, Failure> runWatch(ControlClient& client, bool asJSON);

}  // namespace quilletctl
