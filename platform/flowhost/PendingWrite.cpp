#include "platform/flowhost/PendingWrite.h"

#include <utility>

#include "platform/base/Description.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/network/NWError.h"

namespace platform {

PendingWrite::PendingWrite(std::size_t datagrams, NEAppProxyUDPFlow::WriteCompletion completion)
    : remaining_(datagrams), completion_(std::move(completion)) {}

void PendingWrite::datagramDone(std::error_code error) {
  error_ = error_ ? error_ : error;
  if (--remaining_ > 0 || !completion_) {
    return;
  }
  DispatchQueue::global().async([completion = std::exchange(completion_, nullptr), error = error_] {
    completion(error ? std::optional(Error(description(NWError::from(error)))) : std::nullopt);
  });
}

}  // namespace platform
