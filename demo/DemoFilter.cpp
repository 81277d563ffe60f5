#include "demo/DemoFilter.h"

#include <unistd.h>

#include <span>
#include <string_view>
#include <utility>

#include "demo/DemoAnswer.h"
#include "demo/DemoPolicy.h"
#include "demo/QueryLine.h"
#include "dns_tools/ReturnCode.h"
#include "platform/base/Description.h"
#include "platform/log/LogEscape.h"

namespace quillet {

using DnsToolsSocket::Message;
using DnsToolsSocket::ReturnCode;
using platform::Data;
using platform::DataView;
using platform::SocketAddress;
using platform::UDPSocket;
using Datagrams = std::span<const platform::ReceivedDatagram>;

namespace {

// Room for a burst while the process does not run.
constexpr int kReceiveBufferSize = 4 << 20;

}  // namespace

class DemoFilter::Served final : public platform::SocketWatcher {
 public:
  Served(DemoFilter& filter, Service service) : filter_(filter), service_(service) {}
  virtual ~Served() = default;

  std::error_code begin(const SocketAddress& address) {
    const auto error = socket_.bind(address, {.receiveBuffer = kReceiveBufferSize});
    return error ? error : socket_.watch(*this, {true, false});
  }
  [[nodiscard]] const SocketAddress& address() const { return socket_.address(); }

 private:
  void socketIsReady(bool /*canRead*/, bool /*canWrite*/) override {
    filter_.serveBatch(socket_, service_);
  }

  DemoFilter& filter_;
  const Service service_;
  UDPSocket socket_;
};

DemoFilter::DemoFilter(bool isQuiet) : isQuiet_(isQuiet) {}
DemoFilter::~DemoFilter() = default;

tl::expected<SocketAddress, std::error_code> DemoFilter::serve(const SocketAddress& address,
                                                               Service service) {
  auto served = std::make_unique<Served>(*this, service);
  if (const auto error = served->begin(address)) {
    return tl::unexpected(error);
  }
  const auto& bound = served->address();
  if (service == Service::queries && !bound.isIPv6()) {
    mappedServer_ = platform::description(bound);
  }
  served_.push_back(std::move(served));
  return bound;
}

void DemoFilter::serveBatch(UDPSocket& socket, Service service) {
  const auto received = socket.receive(slots_);
  std::vector<UDPSocket::Answer> answers;
  for (const auto& datagram : received ? *received : Datagrams()) {
    if (auto bytes = answer(service, datagram.bytes)) {
      answers.push_back({datagram.path, *std::move(bytes)});
    }
  }
  socket.sendAll(answers);
  printLines();
}

std::optional<Data> DemoFilter::answer(Service service, DataView datagram) {
  switch (service) {
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
  const auto policy = policyFor(mappedServer_);
  return Data(policy.begin(), policy.end());
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
