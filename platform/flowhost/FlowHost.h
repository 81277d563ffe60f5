#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

#include "platform/base/Error.h"
#include "platform/flowhost/FlowObserver.h"
#include "platform/networkextension/NEDNSProxyProvider.h"
#include "platform/senders/SenderLookup.h"

namespace platform {

/// What a flow host serves.
struct FlowHostOptions {
  /// IP addresses, the wildcard ones too, and ports; port 0 leaves the choice to the system.
  std::vector<NWHostEndpoint> listen;
  /// The signing identifier of an application that is not known.
  std::string sourceApp;
  /// How far it is looked for; absent: not at all, and none is known.
  std::optional<SenderLookup::Depth> identify{};
  /// Where the system's own DNS servers stand, and their port.
  std::filesystem::path resolvConf = "/etc/resolv.conf";
  std::uint16_t resolverPort = 53;
  /// Sees each flow; may be nullptr, and then nothing of a flow is of an activity.
  std::shared_ptr<FlowObserver> observer{};
};

/// A server for the DNS queries of local clients by UDP and TCP, which drives a provider: it makes
/// one flow of what one client socket has sent in one read by UDP, and one of each query by TCP,
/// and offers it. Flows that the provider declines go to the destination of their queries,
/// where these were captured on their way there, else to the system's own DNS server. What this
/// process's own sockets have sent is dropped, with a log line: it would come back as the next
/// query. A flow whose application takes its time to be found is offered later than others that
/// came after it. Inside the event loop only.
class FlowHost {
 public:
  /// Binds all addresses; what comes there waits. The error names the endpoint that cannot be
  /// bound: `cannot listen on 127.0.0.1:5300: Address already in use`.
  static tl::expected<std::unique_ptr<FlowHost>, Error> bind(const FlowHostOptions& options);
  ~FlowHost();
  FlowHost(const FlowHost&) = delete;
  FlowHost& operator=(const FlowHost&) = delete;

  /// Offers what comes to `provider`, which outlives the host, from now on. Called once. The error
  /// says why the system does not let it.
  std::optional<Error> serve(NEDNSProxyProvider& provider);

  /// Closes the sockets: no flow is offered any more, and what is written into those there are
  /// fails. A second call does nothing.
  void stop();

  /// What is bound, in the order of the options, with the ports that the system has chosen.
  [[nodiscard]] std::vector<NWHostEndpoint> boundEndpoints() const;

 private:
  struct State;

  explicit FlowHost(std::shared_ptr<State> state);

  const std::shared_ptr<State> state_;
};

}  // namespace platform
