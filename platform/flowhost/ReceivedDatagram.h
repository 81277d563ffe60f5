#pragma once

#include "platform/flowhost/FlowPath.h"
#include "platform/foundation/Data.h"

namespace platform {

/// A datagram where it was received into, and its way here.
struct ReceivedDatagram {
  FlowPath path;
  DataView bytes;
};

}  // namespace platform
