#pragma once

#include <functional>
#include <memory>
#include <span>

#include "platform/base/Data.h"
#include "platform/base/Transport.h"
#include "platform/log/Activity.h"
#include "platform/networkextension/NEAppProxyUDPFlow.h"

namespace platform {

/// A flow as an activity, from the arrival of its queries until nothing more can come of them: then
/// it is destroyed, and queries without an answer are given up.
class FlowActivity : public Activity {
 public:
  /// It is offered to the provider: its application is known, as far as it ever will be.
  virtual void offered(const NEFlowMetaData& metaData) = 0;
  /// The provider has declined it.
  virtual void declined() = 0;
  /// Takes an answer on its way to the client; what this gives is called when it was sent.
  virtual std::function<void()> answering(DataView answer) = 0;
};

/// Sees every flow of a flow host. Inside the event loop only.
class FlowObserver {
 public:
  FlowObserver() = default;
  FlowObserver(const FlowObserver&) = delete;
  FlowObserver& operator=(const FlowObserver&) = delete;
  virtual ~FlowObserver() = default;

  /// What one client socket has sent has arrived. Never gives nullptr.
  virtual std::shared_ptr<FlowActivity> began(Transport transport,
                                              std::span<const Data> queries) = 0;
};

}  // namespace platform
