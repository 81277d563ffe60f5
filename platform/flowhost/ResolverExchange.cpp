#include "platform/flowhost/ResolverExchange.h"

#include <utility>

#include "platform/base/Description.h"

namespace platform {

void ResolverExchange::begin(std::shared_ptr<NEAppProxyUDPFlow> flow, const SocketAddress& server) {
  const std::shared_ptr<ResolverExchange> exchange(new ResolverExchange(std::move(flow), server));
  exchange->read();
}

ResolverExchange::ResolverExchange(std::shared_ptr<NEAppProxyUDPFlow> flow,
                                   const SocketAddress& server)
    : flow_(std::move(flow)),
      connection_(
          NWConnection::create(NWEndpoint::Host(server.host()), NWEndpoint::Port(server.port()))) {}

void ResolverExchange::read() {
  flow_->readDatagrams(
      [self = shared_from_this()](std::optional<std::vector<Data>> datagrams,
                                  std::optional<std::vector<NWHostEndpoint>> endpoints,
                                  const std::optional<Error>& error) {
        if (error || !datagrams || datagrams->empty() || !endpoints) {
          self->end(error);
        } else {
          self->connect(*std::move(datagrams), *std::move(endpoints));
        }
      });
}

void ResolverExchange::connect(std::vector<Data> datagrams, std::vector<NWHostEndpoint> endpoints) {
  datagrams_ = std::move(datagrams);
  endpoints_ = std::move(endpoints);
  connection_->stateUpdateHandler = [self = shared_from_this()](const NWConnection::State& state) {
    self->stateChanged(state);
  };
  connection_->start(DispatchQueue::global());
}

void ResolverExchange::stateChanged(const NWConnection::State& state) {
  using Kind = NWConnection::State::Kind;
  if (state.kind == Kind::ready) {
    sendAll();
  } else if (state.error) {
    end(Error(description(*state.error)));
  } else if (state.kind == Kind::cancelled) {
    end(Error("given up to make room"));
  }
}

void ResolverExchange::sendAll() {
  for (auto& datagram : datagrams_) {
    connection_->send(
        std::move(datagram),
        [self = shared_from_this()](const std::optional<NWError>& error) { self->sent(error); });
  }
}

void ResolverExchange::sent(const std::optional<NWError>& error) {
  if (error) {
    end(Error(description(*error)));
    return;
  }
  connection_->receiveMessage([self = shared_from_this()](std::optional<Data> answer,
                                                          bool /*isComplete*/,
                                                          const std::optional<NWError>& failure) {
    self->received(std::move(answer), failure);
  });
}

void ResolverExchange::received(std::optional<Data> answer, const std::optional<NWError>& error) {
  if (!answer) {
    end(Error(error ? description(*error) : "no answer"));
    return;
  }
  const auto index = answers_++;
  const bool isLast = answers_ == datagrams_.size();
  std::vector<Data> datagrams;
  datagrams.push_back(*std::move(answer));
  flow_->writeDatagrams(std::move(datagrams), {endpoints_[index]},
                        [self = shared_from_this(), isLast](const std::optional<Error>& failure) {
                          if (isLast || failure) {
                            self->end(failure);
                          }
                        });
}

void ResolverExchange::end(const std::optional<Error>& error) {
  if (std::exchange(isOver_, true)) {
    return;
  }
  flow_->closeReadWithError(error);
  flow_->closeWriteWithError(error);
  connection_->cancel();
}

}  // namespace platform
