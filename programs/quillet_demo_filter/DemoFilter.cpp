#include "programs/quillet_demo_filter/DemoFilter.h"

#include <poll.h>
#include <unistd.h>

#include <string_view>
#include <utility>

#include "dns_tools/ReturnCode.h"
#include "platform/log/LogEscape.h"
#include "programs/quillet_demo_filter/DemoAnswer.h"
#include "programs/quillet_demo_filter/DemoPolicy.h"
#include "programs/quillet_demo_filter/QueryLine.h"

namespace quillet {

using DnsToolsSocket::Message;
using DnsToolsSocket::ReturnCode;
using platform::Data;
using platform::DataView;

namespace {

using Service = DemoSocket::Service;

/// The policy that sends the mapped domain to the last IPv4 socket of queries: a policy has no form
/// for an IPv6 server.
std::string policyOf(const std::vector<DemoSocket>& sockets) {
  std::string server;
  for (const auto& [socket, service] : sockets) {
    if (service == Service::queries && !socket.address().isIPv6) {
      server = socket.address().text();
    }
  }
  return policyFor(server);
}

}  // namespace

DemoFilter::DemoFilter(std::vector<DemoSocket> sockets, bool isQuiet)
    : sockets_(std::move(sockets)), policy_(policyOf(sockets_)), isQuiet_(isQuiet) {}

void DemoFilter::run(int stopDescriptor) {
  std::vector<pollfd> watched;
  for (const DemoSocket& served : sockets_) {
    watched.push_back({served.socket.descriptor(), POLLIN, 0});
  }
  watched.push_back({stopDescriptor, POLLIN, 0});
  for (;;) {
    if (::poll(watched.data(), watched.size(), -1) < 0) {
      continue;
    }
    if (watched.back().revents != 0) {
      return;
    }
    for (std::size_t i = 0; i < sockets_.size(); ++i) {
      if (watched[i].revents != 0) {
        serveBatch(sockets_[i]);
      }
    }
    printLines();
  }
}

void DemoFilter::serveBatch(DemoSocket& served) {
  const std::vector<platform::DataView> datagrams = served.socket.receive();
  for (std::size_t i = 0; i < datagrams.size(); ++i) {
    if (auto answer = serve(served, datagrams[i])) {
      served.socket.answer(i, *std::move(answer));
    }
  }
  served.socket.flush();
}

std::optional<Data> DemoFilter::serve(const DemoSocket& served, DataView datagram) {
  switch (served.service) {
    case Service::queries:
      return answerQuery(datagram, "");
    case Service::policy:
      return answerRequest(datagram);
    case Service::portal:
      return answerQuery(datagram, "portal ");
  }
  return std::nullopt;
}

std::optional<Data> DemoFilter::answerRequest(DataView datagram) {
  const auto organization = organizationOf(datagram);
  if (!organization) {
    return std::nullopt;
  }
  if (!isQuiet_) {
    lines_.append("policy ");
    platform::appendEscaped(lines_, *organization);
    lines_.push_back('\n');
  }
  return Data(policy_.begin(), policy_.end());
}

std::optional<Data> DemoFilter::answerQuery(DataView datagram, const char* label) {
  ++totals_.queries;
  const auto answer = answerFor(datagram, label);
  if (!answer) {
    return std::nullopt;
  }
  auto bytes = answer->serialize();
  if (!bytes) {
    return std::nullopt;
  }
  ++(answer->returnCode == ReturnCode::noError ? totals_.answered : totals_.refused);
  return *std::move(bytes);
}

std::optional<Message> DemoFilter::answerFor(DataView datagram, const char* label) {
  const auto query = Message::deserialize(datagram);
  if (!query) {
    return answerToUndecodable(datagram);
  }
  auto answer = answerTo(*query);
  if (answer && !isQuiet_) {
    lines_.append(label);
    appendQueryLine(lines_, *query);
  }
  return answer;
}

void DemoFilter::printLines() {
  std::string_view rest = lines_;
  while (!rest.empty()) {
    const ssize_t written = ::write(STDOUT_FILENO, rest.data(), rest.size());
    if (written <= 0) {
      break;  // nobody reads them
    }
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  lines_.clear();
}

}  // namespace quillet
