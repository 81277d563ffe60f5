#include "control/ControlService.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "DnsProxyExt/registry/FlowReport.h"
#include "dns_tools/Message.h"
#include "platform/log/LogEscape.h"
#include "platform/log/LogMode.h"
#include "platform/log/NSLog.h"

namespace quillet {

using platform::JSONObject;
using platform::JSONRPCError;
using platform::JSONRPCFault;
using platform::JSONValue;

namespace {

tl::unexpected<JSONRPCFault> fault(JSONRPCError error, std::string message = {}) {
  return tl::unexpected(JSONRPCFault{error, std::move(message)});
}

bool isText(const JSONValue& value) { return value.is_string(); }
bool isBoolean(const JSONValue& value) { return value.is_boolean(); }
bool isMode(const JSONValue& value) {
  return isText(value) && platform::logModeNamed(value.get<std::string>());
}

bool isCount(const JSONValue& value) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
  return value.is_number_unsigned() && value.get<std::uint64_t>() <= kMost;
}

struct Param {
  const char* name;
  bool (*hasType)(const JSONValue& value);
  bool isRequired = false;
};

bool isValid(const JSONObject& params, const std::vector<Param>& wanted) {
  std::size_t found = 0;
  for (const auto& [name, hasType, isRequired] : wanted) {
    const auto given = params.find(name);
    if (given == params.end() ? isRequired : !hasType(given->second)) {
      return false;
    }
    found += given == params.end() ? 0U : 1U;
  }
  return found == params.size();
}

template <class T>
std::optional<T> valueOf(const JSONObject& params, const char* name) {
  const auto given = params.find(name);
  return given == params.end() ? std::nullopt : std::optional(given->second.get<T>());
}

double secondsSince(platform::DispatchTime time) {
  return static_cast<double>(platform::DispatchTime::now().uptimeNanoseconds -
                             time.uptimeNanoseconds) /
         1e9;
}

/// The name as the proxy reads it out of a query; absent for one that no query can hold.
std::optional<std::string> questionName(const std::string& name) {
  DnsToolsSocket::Message query;
  query.questions.push_back({.name = name});
  const auto bytes = query.serialize();
  if (!bytes) {
    return std::nullopt;
  }
  const auto read = DnsToolsSocket::Message::deserialize(*bytes);
  return read ? std::optional(read->questions.front().name) : std::nullopt;
}

JSONValue textOrNull(const std::optional<std::string>& text) {
  return text ? JSONValue(*text) : JSONValue(nullptr);
}

JSONObject jsonOf(const Explanation& explanation) {
  return {{"rule", explanation.rule},
          {"server", explanation.server},
          {"matched", textOrNull(explanation.matched)},
          {"from", textOrNull(explanation.from)},
          {"identity", explanation.identity.has_value()},
          {"options", explanation.identity.value_or(ValuesForInject())}};
}

/// A report made piece by piece, each line as the log would show it.
class ReportText {
 public:
  /// `provider` owns the registry.
  ReportText(std::shared_ptr<DnsProxyExt> provider, ReportSettings settings)
      : provider_(std::move(provider)), report_(provider_->flowManager, std::move(settings)) {}

  std::optional<std::string> operator()() {
    if (isOver_) {
      return std::nullopt;
    }
    std::string piece;
    isOver_ = !report_.print(ControlService::kReportPiece, LineSink([&](std::string_view line) {
                               platform::appendEscaped(piece, line);
                               piece.push_back('\n');
                             }));
    return piece;
  }

 private:
  std::shared_ptr<DnsProxyExt> provider_;
  FlowReport report_;
  bool isOver_ = false;
};

}  // namespace

ControlService::ControlService(std::shared_ptr<DnsProxyExt> provider, ControlledProcess process)
    : provider_(std::move(provider)), process_(std::move(process)) {}

struct ControlService::Method {
  std::string_view name;
  Result (ControlService::*call)(const Params& params, const Client& client);
  std::vector<Param> params = {};
};

const ControlService::Method* ControlService::find(std::string_view name) {
  using Self = ControlService;
  static const std::vector<Method> kMethods = {
      {"status", &Self::status},
      {"metrics", &Self::metrics},
      {"explain", &Self::explain, {{"name", isText, true}, {"app", isText}}},
      {"report", &Self::report, {{"seconds", isCount}, {"app", isText}, {"detailed", isBoolean}}},
      {"watch", &Self::watch},
      {"bypass", &Self::bypass, {{"on", isBoolean, true}}},
      {"log", &Self::log, {{"mode", isMode, true}}},
      {"reload", &Self::reload},
  };
  const auto found = std::find_if(kMethods.begin(), kMethods.end(),
                                  [&](const Method& method) { return method.name == name; });
  return found == kMethods.end() ? nullptr : &*found;
}

ControlService::Result ControlService::call(const std::string& name, const JSONObject& params,
                                            const Client& client) {
  const auto* const method = find(name);
  if (method == nullptr) {
    return fault(JSONRPCError::kMethodNotFound);
  }
  return isValid(params, method->params) ? (this->*method->call)(params, client)
                                         : fault(JSONRPCError::kInvalidParams);
}

void ControlService::tell(const QueryOutcome& outcome) {
  queries_.count(outcome);
  feed_.tell(outcome);
}

ProxyStatus ControlService::currentStatus() const {
  ProxyStatus status{.uptime = secondsSince(start_),
                     .listen = process_.listen,
                     .bypass = provider_->bypassAll,
                     .log = platform::logMode(),
                     .policyDomains = provider_->whitelistedDomainsMap.size(),
                     .policyOutcome = provider_->policyState.last,
                     .queries = queries_,
                     .openQueries = process_.openQueries()};
  for (int rule = 1; rule < static_cast<int>(queries_.byRule.size()); ++rule) {
    status.servers[rule] = provider_->serverTexts(static_cast<Route::Rule>(rule - 1));
  }
  if (const auto& fetched = provider_->policyState.fetched) {
    status.policyAge = secondsSince(*fetched);
  }
  return status;
}

ControlService::Result ControlService::status(const Params& /*params*/, const Client& /*client*/) {
  return currentStatus().json();
}

ControlService::Result ControlService::metrics(const Params& /*params*/, const Client& /*client*/) {
  return JSONValue(currentStatus().openMetrics());
}

ControlService::Result ControlService::explain(const Params& params, const Client& /*client*/) {
  const auto name = questionName(params.at("name").get<std::string>());
  if (!name) {
    return fault(JSONRPCError::kInvalidParams, "no query can hold this name");
  }
  const auto application =
      valueOf<std::string>(params, "app").value_or(process_.unknownApplication);
  return JSONValue(jsonOf(provider_->explain(*name, application)));
}

ControlService::Result ControlService::report(const Params& params, const Client& /*client*/) {
  ReportSettings settings{.forLastSecs = valueOf<std::int64_t>(params, "seconds"),
                          .package = valueOf<std::string>(params, "app"),
                          .detailed = valueOf<bool>(params, "detailed").value_or(false)};
  return platform::JSONRPCTextSource(ReportText(provider_, std::move(settings)));
}

ControlService::Result ControlService::watch(const Params& /*params*/, const Client& client) {
  feed_.add(client);
  return JSONValue(nullptr);
}

ControlService::Result ControlService::bypass(const Params& params, const Client& /*client*/) {
  const bool isOn = params.at("on").get<bool>();
  provider_->receivedCommandFromApp({.cmdType = XpcUdpCommandParser::CmdType::command,
                                     .payload = isOn ? "bypassAllOn" : "bypassAllOff"});
  return JSONValue(nullptr);
}

ControlService::Result ControlService::log(const Params& params, const Client& /*client*/) {
  const auto mode = params.at("mode").get<std::string>();
  platform::setLogMode(*platform::logModeNamed(mode));
  platform::NSLog("log mode: ", mode);
  return JSONValue(nullptr);
}

ControlService::Result ControlService::reload(const Params& /*params*/, const Client& /*client*/) {
  if (auto problem = process_.reload()) {
    return fault(JSONRPCError::kMethodFailed, *std::move(problem));
  }
  return JSONValue(nullptr);
}

}  // namespace quillet
