#include "platform/flowhost/DatagramExchange.h"

#include <utility>

namespace platform {

DatagramExchange::DatagramExchange(std::shared_ptr<NEAppProxyUDPFlow> flow,
                                   const SocketAddress& server)
    : ResolverExchange(std::move(flow)),
      connection_(
          NWConnection::create(NWEndpoint::Host(server.host()), NWEndpoint::Port(server.port()))) {}

std::shared_ptr<DatagramExchange> DatagramExchange::self() {
  return std::static_pointer_cast<DatagramExchange>(shared_from_this());
}

void DatagramExchange::send(std::vector<Data> queries) {
  queries_ = std::move(queries);
  connection_->stateUpdateHandler = [self = self()](const NWConnection::State& state) {
    self->stateChanged(state);
  };
  connection_->start(DispatchQueue::global());
}

void DatagramExchange::stateChanged(const NWConnection::State& state) {
  using Kind = NWConnection::State::Kind;
  if (state.kind == Kind::ready) {
    sendAll();
  } else if (state.error) {
    fail(*state.error);
  } else if (state.kind == Kind::cancelled) {
    end(Error("given up to make room"));
  }
}

void DatagramExchange::sendAll() {
  for (auto& query : queries_) {
    connection_->send(std::move(query),
                      [self = self()](const std::optional<NWError>& error) { self->sent(error); });
  }
}

void DatagramExchange::sent(const std::optional<NWError>& error) {
  if (error) {
    fail(*error);
    return;
  }
  connection_->receiveMessage([self = self()](std::optional<Data> answer, bool /*isComplete*/,
                                              const std::optional<NWError>& failure) {
    self->received(std::move(answer), failure);
  });
}

void DatagramExchange::received(std::optional<Data> answer, const std::optional<NWError>& error) {
  if (answer) {
    answered(*std::move(answer));
  } else if (error) {
    fail(*error);
  }
}

}  // namespace platform
