#include "platform/flowhost/StreamExchange.h"

#include <utility>

#include "platform/base/Description.h"
#include "platform/network/NWError.h"

namespace platform {

namespace {

std::optional<Error> errorFrom(std::error_code code) {
  return code ? std::optional(Error(description(NWError::from(code)))) : std::nullopt;
}

}  // namespace

void StreamExchange::begin(const SocketAddress& server) {
  const auto self = shared_from_this();
  timer_ = Timer::scheduled(kSeconds, false, [self] { self->end(Error("no answer in time")); });
  flow_->readDatagrams([self, server](const std::optional<std::vector<Data>>& datagrams,
                                      std::optional<std::vector<NWHostEndpoint>> endpoints,
                                      const std::optional<Error>& error) {
    if (error || !datagrams || datagrams->empty() || !endpoints) {
      self->end(error);
    } else {
      self->ask(server, *datagrams, *std::move(endpoints));
    }
  });
}

void StreamExchange::ask(const SocketAddress& server, const std::vector<Data>& queries,
                         std::vector<NWHostEndpoint> endpoints) {
  if (isOver_) {
    return;
  }
  endpoints_ = std::move(endpoints);
  if (const auto error = stream_.connect(server, weak_from_this())) {
    end(errorFrom(error));
    return;
  }
  stream_.setReading(true);
  for (const auto& query : queries) {
    stream_.send(query, [](std::error_code) {});  // the stream tells of an error
  }
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
  if (const auto error = errorFrom(stream_.error())) {
    end(error);
  } else if (stream_.hasEnded()) {
    end(Error("the server has closed the connection"));
  }
}

void StreamExchange::received(Data answer) {
  if (answer.empty()) {
    end(Error("an answer of no octets"));
    return;
  }
  const auto index = answers_++;
  const bool isLast = answers_ == endpoints_.size();
  if (isLast) {
    stream_.close();
  }
  std::vector<Data> datagrams;
  datagrams.push_back(std::move(answer));
  flow_->writeDatagrams(std::move(datagrams), {endpoints_[index]},
                        [self = shared_from_this(), isLast](const std::optional<Error>& failure) {
                          if (isLast || failure) {
                            self->end(failure);
                          }
                        });
}

void StreamExchange::end(const std::optional<Error>& error) {
  if (std::exchange(isOver_, true)) {
    return;
  }
  const auto self = shared_from_this();
  timer_.invalidate();
  stream_.close();
  flow_->closeReadWithError(error);
  flow_->closeWriteWithError(error);
}

}  // namespace platform
