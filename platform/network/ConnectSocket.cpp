#include "platform/network/ConnectSocket.h"

#include <optional>

#include "platform/network/OpenConnections.h"

namespace platform {

namespace {

using Kind = NWConnection::State::Kind;

std::optional<SocketAddress> addressOf(const NWEndpoint::Host& host, NWEndpoint::Port port) {
  const bool isLoopbackName = host.text() == "localhost";
  return SocketAddress::parse(isLoopbackName ? "127.0.0.1" : host.text(), port.rawValue);
}

std::error_code openMakingRoom(UDPSocket& socket, sa_family_t family) {
  const auto error = socket.open(family);
  const bool lacksDescriptors =
      error == std::errc::too_many_files_open || error == std::errc::too_many_files_open_in_system;
  const bool hasRoom = lacksDescriptors && OpenConnections::shared().cancelIdleLongest();
  return hasRoom ? socket.open(family) : error;
}

}  // namespace

NWConnection::State connectSocket(UDPSocket& socket, const NWEndpoint::Host& host,
                                  NWEndpoint::Port port) {
  const auto address = addressOf(host, port);
  if (!address) {
    return {Kind::waiting, NWError::noSuchRecord()};
  }
  if (OwnSockets::shared().servesAt(*address)) {
    return {Kind::failed, NWError::ownAddress()};
  }
  if (const auto error = openMakingRoom(socket, address->family())) {
    return {Kind::failed, NWError::from(error)};
  }
  if (const auto error = socket.connect(*address)) {
    socket.close();
    return {Kind::waiting, NWError::from(error)};
  }
  return {Kind::ready, std::nullopt};
}

}  // namespace platform
