#pragma once

#include "platform/base/Data.h"
#include "platform/flowhost/FlowPath.h"

namespace platform {

/// A datagram where it was received into, and its way here.
struct ReceivedDatagram {
  FlowPath path;
  DataView bytes;
};

}  // namespace platform
