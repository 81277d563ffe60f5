#include "platform/flowhost/ResolverExchange.h"

#include <utility>

#include "platform/base/Description.h"

namespace platform {

void ResolverExchange::begin() {
  flow_->readDatagrams(
      [self = shared_from_this()](std::optional<std::vector<Data>> datagrams,
                                  std::optional<std::vector<NWHostEndpoint>> endpoints,
                                  const std::optional<Error>& error) {
        if (error || !datagrams || datagrams->empty() || !endpoints) {
          self->end(error);
        } else if (!self->isOver_) {
          self->endpoints_ = *std::move(endpoints);
          self->send(*std::move(datagrams));
        }
      });
}

void ResolverExchange::answered(Data answer) {
  const auto index = answers_++;
  std::vector<Data> datagrams;
  datagrams.push_back(std::move(answer));
  flow_->writeDatagrams(
      std::move(datagrams), {endpoints_[index]},
      [self = shared_from_this(), isLast = isAnswered()](const std::optional<Error>& error) {
        if (isLast || error) {
          self->end(error);
        }
      });
}

void ResolverExchange::fail(const NWError& error) { end(Error(description(error))); }

void ResolverExchange::end(const std::optional<Error>& error) {
  if (std::exchange(isOver_, true)) {
    return;
  }
  const auto self = shared_from_this();
  disconnect();
  flow_->closeReadWithError(error);
  flow_->closeWriteWithError(error);
}

}  // namespace platform
