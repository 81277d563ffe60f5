#include "platform/flowhost/PendingWrite.h"

#include <utility>

#include "platform/base/Description.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/network/NWError.h"

namespace platform {

PendingWrite::PendingWrite(std::size_t datagrams, NEAppProxyUDPFlow::WriteCompletion completion)
    : remaining_(datagrams), completion_(std::move(completion)) {}

void PendingWrite::end(std::optional<Error> error) {
  error_ = std::move(error);
  complete();
}

void PendingWrite::datagramDone(std::error_code error) {
  if (error && !error_) {
    error_ = Error(description(NWError::from(error)));
  }
  if (--remaining_ == 0) {
    complete();
  }
}

void PendingWrite::complete() {
  if (completion_) {
    DispatchQueue::global().async([completion = std::exchange(completion_, nullptr),
                                   error = std::move(error_)] { completion(error); });
  }
}

}  // namespace platform
