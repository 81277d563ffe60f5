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

#include "DnsProxyExt/DNSFlowReport.h"
#include "DnsProxyExt/DomainMap.h"
#include "DnsProxyExt/FlowManager.h"
#include "DnsProxyExt/MDMConfigurationManager.h"
#include "DnsProxyExt/ReportSettings.h"
#include "DnsProxyExt/Utils.h"
#include "dns_tools/Message.h"
#include "platform/networkextension/NEDNSProxyProvider.h"

namespace quillet {

/// The DNS proxy provider: takes each flow of DNS queries, chooses the server that answers it, adds
/// the identity to queries for the filtering DNS service, forwards them and writes the answers
/// back.
///
/// One translation unit for each stage of a query's road: DnsProxyExt.cpp (start and stop),
/// FlowIntake.cpp, Routing.cpp, ResponsePath.cpp; Reports.cpp prints what is asked for on the way.
///
/// Owned by a shared_ptr, which its callbacks hold. Inside the event loop only, `bypassAll`
/// excepted.
class DnsProxyExt : public platform::NEDNSProxyProvider,
                    public std::enable_shared_from_this<DnsProxyExt> {
 public:
  using FlowManager = quillet::FlowManager;
  using ManagedFlow = quillet::ManagedFlow;
  using ReportSettings = quillet::ReportSettings;
  using DNSFlowReport = quillet::DNSFlowReport;
  using Flow = std::shared_ptr<platform::NEAppProxyUDPFlow>;

  static constexpr char kGroupId[] = "group.com.quillet.filteringosx";
  /// Reports of batches without an answer that are kept; the oldest goes first. One costs about 200
  /// octets, and a key in a log line of every answer.
  static constexpr std::size_t kMaxReports = 2048;

  DnsProxyExt();

  // Start, stop and settings.

  /// Always completes without error.
  void startProxy(std::optional<platform::NEProviderOptions> options,
                  StartCompletion completion) override;
  void stopProxy(platform::NEProviderStopReason reason, StopCompletion completion) override;
  void sleep(StopCompletion completion) override;
  void wake() override;
  /// Whether the filtering DNS service is to be used: not when "allowAll" is "true".
  [[nodiscard]] bool useQuilletDNS() const;

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
  /// The server of the most particular fragment that `domain` contains, or nullptr. A fragment
  /// without text matches nothing.
  static DNSHostRef mappedForOtherDNS(std::string_view domain, const DomainMap& dnsMap);

  // Answers.

  /// Takes one answer for a flow: writes it into the flow, and closes the flow after the last one.
  void handleInBoundDatagram(const Flow& flow, std::optional<platform::Data> datagram,
                             bool isFinished, const platform::NWHostEndpoint& endpoint,
                             std::optional<platform::Error> error);

  // Decoding, logged.

  std::optional<DnsToolsSocket::Message> decodeDNSRequest(platform::DataView data,
                                                          std::int64_t flowHash) const;
  std::optional<DnsToolsSocket::Message> decodeDNSResponse(platform::DataView data,
                                                           std::int64_t flowHash) const;
  std::optional<DnsToolsSocket::Message> decodeDNSData(platform::DataView data,
                                                       std::string_view str) const;

  // Reports.

  /// Reads the parameters of a report command: what follows the marker in a query name.
  static ReportSettings checkDomainForCommand(std::string_view domain);
  void printExtensionSettings() const;

  // State, as settings, the policy and tests set it.

  FlowManager flowManager;
  std::optional<platform::JSONObject> vendorData;
  std::optional<platform::NEProviderOptions> options;
  std::set<std::string> safeSearchDomains;
  bool shouldAllowAll = false;
  DNSFlowReports dnsFlowsReports;
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
  /// Takes a command as text.
  std::function<void(const std::string&)> xpcCommandListener;
  /// When true, new flows are declined. May be set from any thread.
  std::atomic<bool> bypassAll = false;

 private:
  struct Route;

  // Start (DnsProxyExt.cpp).
  void takeOptions(std::optional<platform::NEProviderOptions> newOptions);
  bool takeVendorData();
  void logStoredVendorData() const;
  void logUserEmail() const;
  void initVendorSettings();
  void initServers();
  void initAllowedApps();
  [[nodiscard]] const std::string* setting(std::string_view key) const;
  [[nodiscard]] std::string identity() const;

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
  static void logRoute(const Route& route);
  [[nodiscard]] std::vector<platform::Data> injectIdentity(const std::string& app,
                                                           const std::vector<platform::Data>& batch,
                                                           std::int64_t flowHash) const;
  void startReport(std::int64_t flowHash, const std::string& dnsServer);
  void exchange(const Flow& flow, std::vector<platform::Data> batch,
                std::vector<platform::NWHostEndpoint> endpoints, const Utils::DNSHost& server);

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
};

}  // namespace quillet
