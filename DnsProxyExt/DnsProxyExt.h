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

#include "DnsProxyExt/registry/DNSFlowReport.h"
#include "DnsProxyExt/registry/FlowManager.h"
#include "DnsProxyExt/registry/ReportSettings.h"
#include "DnsProxyExt/relay/AppToExtDelegate.h"
#include "DnsProxyExt/relay/XpcUdpHelper.h"
#include "DnsProxyExt/routing/DomainMap.h"
#include "DnsProxyExt/routing/Utils.h"
#include "DnsProxyExt/settings/MDMConfigurationManager.h"
#include "DnsProxyExt/upstream/CapPortalHelper.h"
#include "dns_tools/Message.h"
#include "platform/dispatch/Timer.h"
#include "platform/networkextension/NEDNSProxyProvider.h"
#include "platform/store/UserDefaults.h"

namespace quillet {

/// The DNS proxy provider: takes each flow of DNS queries, chooses the server that answers it, adds
/// the identity to queries for the filtering DNS service, forwards them and writes the answers
/// back.
///
/// One translation unit for each stage of a query's road: DnsProxyExt.cpp (start and stop),
/// VendorSettings.cpp, FlowIntake.cpp, Routing.cpp, UpstreamExchange.cpp, ResponsePath.cpp;
/// PolicyFetch.cpp fills the domain maps, Reports.cpp prints what is asked for on the way,
/// RelayLog.h hands lines to the relay service.
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
  /// Whether the filtering DNS service is to be used: not when "allowAll" is "true".
  [[nodiscard]] bool useQuilletDNS() const;

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

  // Answers.

  /// Takes one answer for a flow: writes it into the flow, and closes the flow after the last one.
  void handleInBoundDatagram(const Flow& flow, std::optional<platform::Data> datagram,
                             bool isFinished, const platform::NWHostEndpoint& endpoint,
                             std::optional<platform::Error> error);

  // Decoding, logged: absent for what is no message.

  std::optional<DnsToolsSocket::Message> decodeDNSRequest(platform::DataView data,
                                                          std::int64_t flowHash) const;
  std::optional<DnsToolsSocket::Message> decodeDNSResponse(platform::DataView data,
                                                           std::int64_t flowHash) const;
  std::optional<DnsToolsSocket::Message> decodeDNSData(platform::DataView data,
                                                       std::string_view str) const;

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
  bool shouldAllowAll = false;
  /// Of the exchanges that have a connection and no answer: as many as `NWConnection` lets be open.
  DNSFlowReports dnsFlowsReports;
  /// Absent without captive-portal servers.
  std::shared_ptr<CapPortalHelper> capPortalHelper;
  std::vector<std::string> localNetworkApps{"com.apple.opendirectoryd", "com.apple.nsupdate"};
  DomainMap localDomainsMap;
  DomainMap whitelistedDomainsMap;
  DNSHostRef filteringDNS;
  DNSHostRef secondDNS;
  DNSHostRef localNetworkDNS;
  DNSHostRef policyUDPServer;
  std::vector<std::string> allowedApps;
  std::vector<std::string> captivePortalIps;
  ConfigurationMap macOSconfig;
  std::optional<platform::Timer> printReportTimer{std::in_place};
  std::optional<platform::Timer> fetchPolicyTimer{std::in_place};
  /// False until the first flow.
  bool fetchingPolicyIsStarted = false;
  /// Takes a command as text.
  std::function<void(const std::string&)> xpcCommandListener;
  /// When true, new flows are declined. May be set from any thread.
  std::atomic<bool> bypassAll = false;
  /// Seconds.
  const double fetchPolicyEach = 600;
  /// When a flow last made the policy be fetched again; seconds since 1970.
  std::int64_t lastPolicyFetchTime = 0;

 protected:
  /// What the log calls the provider.
  [[nodiscard]] virtual std::string_view className() const { return "DnsProxyExt"; }

  using AnswerHandler = std::function<void(
      const Flow& flow, std::optional<platform::Data> answer, bool isFinished,
      const platform::NWHostEndpoint& endpoint, std::optional<platform::Error> error)>;

  /// A server by its address and port as texts.
  static DNSHostRef host(std::string_view address, std::string_view port);
  /// Sends a batch to a server; each answer goes to `handler`. Keeps a report that begins now, in
  /// place of an earlier one of the same flow, until there is an answer or the connection goes.
  void exchange(const Flow& flow, std::vector<platform::Data> batch,
                std::vector<platform::NWHostEndpoint> endpoints, const Utils::DNSHost& server,
                AnswerHandler handler);
  /// Whether there is something to send, and somebody to answer for each of it.
  static bool isComplete(const std::optional<std::vector<platform::Data>>& data,
                         const std::optional<std::vector<platform::NWHostEndpoint>>& endpoints);

 private:
  struct Route;
  class KeptReport;

  // The relay service's log (RelayLog.h).
  template <class... Pieces>
  void logTwice(const Pieces&... pieces) const;
  template <class... Pieces>
  void logAtRelay(const Pieces&... pieces) const;

  // Start (DnsProxyExt.cpp).
  void initCapPortalHelper();
  void initLocalUdp();
  [[nodiscard]] std::string identity() const;

  // Vendor data (VendorSettings.cpp).
  bool takeVendorData();
  void logStoredVendorData() const;
  void logUserEmail() const;
  void initVendorSettings();
  void initServers();
  void initAllowedApps();
  [[nodiscard]] const std::string* setting(std::string_view key) const;

  // Policy (PolicyFetch.cpp).
  static void logPolicyFetched(bool success);
  void refreshPolicy();
  void policyReceived(const std::optional<platform::Data>& content,
                      const std::optional<platform::NWError>& error,
                      const FetchCompletion& completion);
  void initLocalDomainsMap();

  // Flow intake (FlowIntake.cpp).
  void openFlow(const Flow& flow);
  void flowOpened(const Flow& flow, const std::optional<platform::Error>& error);
  void datagramsRead(const Flow& flow, std::optional<std::vector<platform::Data>> datagrams,
                     std::optional<std::vector<platform::NWHostEndpoint>> endpoints,
                     const std::optional<platform::Error>& error);
  void recordRequest(const Flow& flow, const std::vector<platform::Data>& datagrams);
  void obeyReportCommand(const Flow& flow) const;

  // Routing (Routing.cpp).
  [[nodiscard]] Route chooseRoute(const std::string& app, platform::DataView firstDatagram,
                                  std::int64_t flowHash) const;
  void logRoute(const Route& route) const;
  [[nodiscard]] std::vector<platform::Data> injectIdentity(const std::string& app,
                                                           const std::vector<platform::Data>& batch,
                                                           std::int64_t flowHash) const;

  // Answers (ResponsePath.cpp).
  [[nodiscard]] std::optional<DNSFlowReport> endedReport(const std::string& key) const;
  static std::optional<std::string> answeredName(
      const std::optional<DnsToolsSocket::Message>& message, std::int64_t flowHash);
  void writeAnswer(const Flow& flow, platform::Data answer, bool isFinished,
                   const platform::NWHostEndpoint& endpoint,
                   std::optional<platform::Error> upstreamError);
  void answerWritten(const Flow& flow, bool isFinished,
                     const std::optional<platform::Error>& upstreamError,
                     const std::optional<platform::Error>& writeError);

  const std::int64_t instanceNumber_;
  std::uint64_t exchanges_ = 0;
};

}  // namespace quillet
