#include "platform/flowhost/StreamExchange.h"

#include <utility>

namespace platform {

std::shared_ptr<StreamExchange> StreamExchange::self() {
  return std::static_pointer_cast<StreamExchange>(shared_from_this());
}

void StreamExchange::begin() {
  timer_ =
      Timer::scheduled(kSeconds, false, [self = self()] { self->end(Error("no answer in time")); });
  ResolverExchange::begin();
}

void StreamExchange::send(std::vector<Data> queries) {
  if (const auto error = stream_.connect(server_, self())) {
    fail(NWError::from(error));
    return;
  }
  stream_.setReading(true);
  for (const auto& query : queries) {
    stream_.send(query, [](std::error_code) {});  // the stream tells of an error
  }
}

void StreamExchange::disconnect() {
  timer_.invalidate();
  stream_.close();
}

void StreamExchange::streamChanged() {
  while (stream_.isOpen()) {
    auto answer = stream_.next();
    if (!answer) {
      break;
    }
    received(*std::move(answer));
  }
  if (!stream_.isOpen()) {
    return;
  }
  if (const auto error = stream_.error()) {
    fail(NWError::from(error));
  } else if (stream_.hasEnded()) {
    end(Error("the server has closed the connection"));
  }
}

void StreamExchange::received(Data answer) {
  if (answer.empty()) {
    end(Error("an answer of no octets"));
    return;
  }
  answered(std::move(answer));
  if (isAnswered()) {
    stream_.close();
  }
}

}  // namespace platform
