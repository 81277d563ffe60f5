#include "DnsProxyExt/upstream/UpstreamExchange.h"

#include <utility>

#include "dns_tools/DNSSocketClient.h"

namespace quillet {

void exchangeOverUDP(Batch batch, const Utils::DNSHost& server, AnswerHandler handler) {
  const auto client = DnsToolsSocket::DNSSocketClient::create(
      std::move(batch.flow), std::move(batch.datagrams), std::move(batch.endpoints));
  client->onDataReceived = [handler = std::move(handler)](
                               const std::shared_ptr<platform::NEAppProxyUDPFlow>& flow,
                               std::optional<platform::Data> datagram,
                               const std::optional<platform::NWHostEndpoint>& endpoint,
                               std::optional<bool> isFinished,
                               const std::optional<platform::NWError>& error) {
    handler({.flow = flow,
             .datagram = std::move(datagram),
             .isFinished = isFinished.value(),
             .endpoint = endpoint.value(),
             .error = error ? std::optional(platform::Error(platform::description(*error)))
                            : std::nullopt});
  };
  client->connectWithDNS(server.address, server.port);
}

}  // namespace quillet
