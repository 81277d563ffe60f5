#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "DnsProxyExt/Explanation.h"
#include "DnsProxyExt/answers/ResponsePath.h"
#include "DnsProxyExt/intake/Batch.h"
#include "DnsProxyExt/intake/Decoding.h"
#include "DnsProxyExt/intake/FlowIntake.h"
#include "DnsProxyExt/registry/DNSFlowReport.h"
#include "DnsProxyExt/registry/FlowManager.h"
#include "DnsProxyExt/registry/ReportSettings.h"
#include "DnsProxyExt/relay/AppToExtDelegate.h"
#include "DnsProxyExt/relay/RelayLog.h"
#include "DnsProxyExt/relay/XpcUdpHelper.h"
#include "DnsProxyExt/routing/RoutingTable.h"
#include "DnsProxyExt/settings/MDMConfigurationManager.h"
#include "DnsProxyExt/settings/VendorSettings.h"
#include "DnsProxyExt/upstream/CapPortalHelper.h"
#include "DnsProxyExt/upstream/Policy.h"
#include "DnsProxyExt/upstream/UpstreamExchange.h"
#include "platform/dispatch/Timer.h"
#include "platform/networkextension/NEDNSProxyProvider.h"
#include "platform/store/UserDefaults.h"

namespace quillet {

/// The DNS proxy provider: takes each flow of DNS queries, chooses the server that answers it, adds
/// the identity to queries for the filtering DNS service, forwards them and writes the answers
/// back.
///
/// Holds the state and puts the stages one after the other: `FlowIntake` takes what a flow gives,
/// `RoutingTable` chooses, an `UpstreamExchange` asks, `ResponsePath` answers. QueryRoad.cpp has
/// that road, DnsProxyExt.cpp start and stop, VendorData.cpp the settings, PolicyFetch.cpp the
/// policy, Explain.cpp where a query would go.
///
/// Owned by a shared_ptr, which its callbacks hold. Inside the event loop only, `bypassAll`
/// excepted.
class DnsProxyExt : public platform::NEDNSProxyProvider,
                    public AppToExtDelegate,
                    public std::enable_shared_from_this<DnsProxyExt> {
 public:
  using FlowManager = quillet::FlowManager;
  using ManagedFlow = quillet::ManagedFlow;
  using ReportSettings = quillet::ReportSettings;
  using DNSFlowReport = quillet::DNSFlowReport;
  using Flow = std::shared_ptr<platform::NEAppProxyUDPFlow>;
  /// Takes whether a fetch brought an answer.
  using FetchCompletion = std::function<void(bool success)>;

  static constexpr char kGroupId[] = "group.com.quillet.filteringosx";
  /// The start option that holds the vendor data, an object.
  static constexpr char kVendorDataOption[] = "VendorData";

  DnsProxyExt();

  // Start, stop and settings.

  /// Always completes without error.
  void startProxy(std::optional<platform::NEProviderOptions> options,
                  StartCompletion completion) override;
  void stopProxy(platform::NEProviderStopReason reason, StopCompletion completion) override;
  void sleep(StopCompletion completion) override;
  void wake() override;
  /// The settings kept for the application group, or nullptr without a directory for them.
  static platform::UserDefaults* groupDefaults();
  /// Those that this provider keeps its vendor data in.
  [[nodiscard]] platform::UserDefaults* defaults() const;
  /// Whether the filtering DNS service is to be used: not when "allowAll" is "true". Logged.
  bool useQuilletDNS() const;

  // Commands.

  /// Obeys a command that came over the command link: turns bypass on or off.
  void receivedCommandFromApp(const XpcUdpCommand& msg) override;
  /// Does nothing.
  void cfReceivedNewMessage(const std::string& msg) override;
  /// Has the relay service log a line.
  void printToUdpLogs(std::string_view log) const;

  // Policy.

  /// Fetches the policy now and once more after `fetchPolicyEach`.
  virtual void startFetchingPolicy();
  /// Asks the policy server for the organisation's domains. A server that cannot be reached never
  /// completes.
  void fetchPolicy(FetchCompletion completion);
  /// Takes the policy server's answer. One that cannot be read, or says that nothing is to change,
  /// leaves `whitelistedDomainsMap` as it is.
  void updateWhitelistedDomains(platform::DataView policyResp);

  // Flow intake.

  bool handleNewUDPFlow(const Flow& flow,
                        const platform::NWHostEndpoint& initialRemoteEndpoint) override;
  /// Reads the flow once and routes what comes.
  void readDatagrams(const Flow& flow);

  // Routing.

  /// Chooses the server for a batch by its first datagram and starts the exchange with it.
  virtual void connectToDNS(const Flow& flow, std::optional<std::vector<platform::Data>> data,
                            std::optional<std::vector<platform::NWHostEndpoint>> endpoints,
                            const std::optional<platform::Error>& error);
  /// The server of the most particular fragment that `domain` contains, or nullptr.
  static DNSHostRef mappedForOtherDNS(std::string_view domain, const DomainMap& dnsMap);

  /// Where a query for `questionName`, a name as a question has it, would go: decided as for a
  /// flow, but none is begun, counted or logged, and nothing changes.
  [[nodiscard]] virtual Explanation explain(const std::string& questionName,
                                            const std::string& application) const;
  /// The different servers of a rule (`RoutingTable::serverTexts`).
  [[nodiscard]] virtual std::set<std::string> serverTexts(Route::Rule rule) const;

  // Answers.

  /// Takes one answer for a flow: writes it into the flow, and closes the flow after the last one.
  void handleInBoundDatagram(const Flow& flow, std::optional<platform::Data> datagram,
                             bool isFinished, const platform::NWHostEndpoint& endpoint,
                             std::optional<platform::Error> error);

  // Decoding, as `Decoding` does.

  static Decoding::Decoded decodeDNSRequest(platform::DataView data, std::int64_t flowHash);
  Decoding::Decoded decodeDNSResponse(platform::DataView data, std::int64_t flowHash) const;
  static Decoding::Decoded decodeDNSData(platform::DataView data, std::string_view str);

  // Reports.

  /// Reads the parameters of a report command: what follows the marker in a query name.
  static ReportSettings checkDomainForCommand(std::string_view domain);
  /// Logs the settings in use.
  void printExtensionSettings() const;

  // State, as settings, the policy and tests set it.

  const std::shared_ptr<XpcUdpHelper> xpcUdpHelper = std::make_shared<XpcUdpHelper>();
  std::optional<std::vector<platform::NEDNSSettings>> mySystemDNSSettings;
  FlowManager flowManager;
  std::optional<platform::JSONObject> vendorData;
  std::optional<platform::NEProviderOptions> options;
  std::set<std::string> safeSearchDomains;
  /// Of the exchanges that have no answer yet, as many as `NWConnection` lets be open, and of the
  /// last ones that are over without one.
  DNSFlowReports dnsFlowsReports;
  /// Absent without captive-portal servers.
  std::shared_ptr<CapPortalHelper> capPortalHelper;
  RoutingTable routing;
  DNSHostRef policyUDPServer;
  std::vector<std::string> captivePortalIps;
  ConfigurationMap macOSconfig;
  std::optional<platform::Timer> printReportTimer{std::in_place};
  std::optional<platform::Timer> fetchPolicyTimer{std::in_place};
  /// False until the first flow.
  bool fetchingPolicyIsStarted = false;
  /// Takes a command as text.
  std::function<void(const std::string&)> xpcCommandListener;
  /// Told, within the activity of a flow, where its queries go.
  std::function<void(const Route&)> onRouted;
  /// When true, new flows are declined. May be set from any thread.
  std::atomic<bool> bypassAll = false;
  /// Seconds.
  const double fetchPolicyEach = 600;
  /// When a flow last made the policy be fetched again; seconds since 1970.
  std::int64_t lastPolicyFetchTime = 0;
  PolicyState policyState;
  /// How a batch reaches its server.
  UpstreamExchange upstream = exchangeOverUDP;

  // The routing table's members under the provider's names.

  bool& shouldAllowAll = routing.shouldAllowAll;
  std::vector<std::string>& localNetworkApps = routing.localNetworkApps;
  std::vector<std::string>& allowedApps = routing.allowedApps;
  DomainMap& localDomainsMap = routing.localDomainsMap;
  DomainMap& whitelistedDomainsMap = routing.whitelistedDomainsMap;
  DNSHostRef& filteringDNS = routing.filteringDNS;
  DNSHostRef& secondDNS = routing.secondDNS;
  DNSHostRef& localNetworkDNS = routing.localNetworkDNS;

 protected:
  /// What the log calls the provider.
  [[nodiscard]] virtual std::string_view className() const { return "DnsProxyExt"; }

  /// Keeps a report that begins now and sends a batch to a server; each answer goes to `handler`.
  /// Without somebody to answer for each datagram nothing is sent.
  void exchange(Batch batch, const Utils::DNSHost& server, AnswerHandler handler);
  /// Takes one answer.
  void answered(Answer answer);

 private:
  // Start (DnsProxyExt.cpp).
  void initCapPortalHelper();
  void initLocalUdp();
  [[nodiscard]] std::string identity() const;

  // Vendor data (VendorData.cpp).
  bool takeVendorData();
  void logStoredVendorData() const;
  void logUserEmail() const;
  void initVendorSettings();
  void initLocalDomainsMap();
  void apply(VendorSetting::Step step);

  // Policy (PolicyFetch.cpp).
  static void logPolicyFetched(bool success);
  void refreshPolicy();
  void policyReceived(const std::optional<platform::Data>& content,
                      const std::optional<platform::NWError>& error,
                      const FetchCompletion& completion);

  // A query's road (QueryRoad.cpp).
  void openFlow(const Flow& flow);
  [[nodiscard]] std::optional<std::string> sourceOf(const Route& route) const;
  [[nodiscard]] std::string vendorKeyOf(std::string_view setting) const;
  [[nodiscard]] Route chooseRoute(const Batch& batch) const;
  void tellRoute(const Route& route) const;
  void injectIdentity(Batch& batch) const;

  const std::int64_t instanceNumber_;
  const RelayLog relayLog_{xpcUdpHelper};
  const Decoding decoding_{relayLog_};
  FlowIntake intake_{flowManager, relayLog_};
  ResponsePath responsePath_{flowManager, dnsFlowsReports, decoding_};
};

}  // namespace quillet
