#include "platform/network/NWConnection.h"

#include <utility>

#include "platform/base/Description.h"
#include "platform/network/OpenConnections.h"
#include "platform/network/UDPConnection.h"

namespace platform {

namespace {

const char* nameOf(NWConnection::State::Kind kind) {
  using Kind = NWConnection::State::Kind;
  switch (kind) {
    case Kind::setup:
      return "setup";
    case Kind::preparing:
      return "preparing";
    case Kind::ready:
      return "ready";
    case Kind::waiting:
      return "waiting";
    case Kind::failed:
      return "failed";
    case Kind::cancelled:
      return "cancelled";
  }
  return "";
}

}  // namespace

void NWConnection::State::describe(std::string& out) const {
  out.append(nameOf(kind));
  if (error) {
    out.push_back('(');
    error->describe(out);
    out.push_back(')');
  }
}

std::shared_ptr<NWConnection> NWConnection::create(NWEndpoint::Host host, NWEndpoint::Port port) {
  return std::make_shared<UDPConnection>(std::move(host), port);
}

std::size_t NWConnection::openCount() { return OpenConnections::shared().count(); }

}  // namespace platform
