#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "DnsProxyExt/DnsProxyExt.h"
#include "control/ProxyStatus.h"
#include "control/QueryCounters.h"
#include "control/WatchFeed.h"
#include "platform/base/Clock.h"
#include "platform/xpc/JSONRPCService.h"
#include "queries/QueryOutcome.h"

namespace quillet {

/// What the control service needs of the process beside its provider.
struct ControlledProcess {
  /// What is served.
  std::vector<std::string> listen{};
  /// The identifier of an application that is not known.
  std::string unknownApplication;
  /// Queries that wait for their answer.
  std::function<std::size_t()> openQueries;
  /// Reads the settings again; gives what keeps it from that.
  std::function<std::optional<std::string>()> reload;
};

/// The methods of the control socket; docs/control.md has their messages. Inside the event loop
/// only.
class ControlService final : public platform::JSONRPCService {
 public:
  using Result = tl::expected<platform::JSONRPCResult, platform::JSONRPCFault>;
  using Client = std::shared_ptr<platform::JSONRPCSubscriber>;

  /// Flows that one piece of a report looks at.
  static constexpr std::size_t kReportPiece = 64;

  ControlService(std::shared_ptr<DnsProxyExt> provider, ControlledProcess process);

  Result call(const std::string& method, const platform::JSONObject& params,
              const Client& client) override;

  /// A query is over.
  void tell(const QueryOutcome& outcome);
  /// At the end of the process: watchers are told what they have not been told yet.
  void finish() { feed_.send(); }

 private:
  using Params = platform::JSONObject;
  struct Method;

  static const Method* find(std::string_view name);

  // The methods; `params` are those of the table in the source, each of its own type.
  Result status(const Params& params, const Client& client);
  Result metrics(const Params& params, const Client& client);
  Result explain(const Params& params, const Client& client);
  Result report(const Params& params, const Client& client);
  Result watch(const Params& params, const Client& client);
  Result bypass(const Params& params, const Client& client);
  Result log(const Params& params, const Client& client);
  Result reload(const Params& params, const Client& client);
  [[nodiscard]] ProxyStatus currentStatus() const;

  const std::shared_ptr<DnsProxyExt> provider_;
  const ControlledProcess process_;
  const platform::DispatchTime start_ = platform::DispatchTime::now();
  QueryCounters queries_;
  WatchFeed feed_;
};

}  // namespace quillet
