#include "platform/flowhost/PendingWrite.h"

#include <utility>

#include "platform/base/Description.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/network/NWError.h"

namespace platform {

PendingWrite::PendingWrite(std::size_t datagrams, NEAppProxyUDPFlow::WriteCompletion completion)
    : remaining_(datagrams), completion_(std::move(completion)) {}

void PendingWrite::datagramDone(std::error_code error) {
  count(error);
  if (remaining_ == 0) {
    DispatchQueue::global().async([self = shared_from_this()] { self->report(); });
  }
}

void PendingWrite::count(std::error_code error) {
  error_ = error_ ? error_ : error;
  --remaining_;
}

void PendingWrite::report() {
  const auto completion = remaining_ == 0 ? std::exchange(completion_, nullptr) : nullptr;
  if (completion) {
    completion(error_ ? std::optional(Error(description(NWError::from(error_)))) : std::nullopt);
  }
}

}  // namespace platform
