#include "DnsProxyExt/DnsProxyExt.h"
#include "DnsProxyExt/upstream/Policy.h"
#include "DnsProxyExt/upstream/PolicyUDPClient.h"
#include "platform/base/Clock.h"
#include "platform/base/Utf8.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/log/NSLog.h"

namespace quillet {

using platform::Data;
using platform::NSLog;
using platform::NWError;

void DnsProxyExt::logPolicyFetched(bool success) {
  NSLog("Policy is fetched, success - ", success);
}

void DnsProxyExt::startFetchingPolicy() {
  NSLog("startFetchingPolicy");
  platform::DispatchQueue::global().asyncAfter(fetchPolicyEach, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) {
      self->fetchPolicy(logPolicyFetched);
    }
  });
  fetchPolicy(logPolicyFetched);
}

// The flow that starts the fetching leaves `lastPolicyFetchTime` as it is, so the second one
// fetches again.
void DnsProxyExt::refreshPolicy() {
  const platform::ActivityScope apart(nullptr);  // no part of the flow that it is fetched for
  if (!fetchingPolicyIsStarted) {
    startFetchingPolicy();
    fetchingPolicyIsStarted = true;
    return;
  }
  const auto now = static_cast<std::int64_t>(platform::secondsSince1970());
  if (static_cast<double>(now - lastPolicyFetchTime) > fetchPolicyEach) {
    lastPolicyFetchTime = now;
    fetchPolicy(logPolicyFetched);
  }
}

void DnsProxyExt::fetchPolicy(FetchCompletion completion) {
  NSLog("fetchPolicy");
  const auto* organization = settingIn(macOSconfig, "organizationId");
  if (organization == nullptr || organization->empty()) {
    NSLog("fetchPolicy: policyUDPServer - orgId = nil");
    completion(false);
    return;
  }
  if (!policyUDPServer) {
    NSLog("fetchPolicy: policyUDPServer - nil");
    completion(false);
    return;
  }
  policyState.last = PolicyState::Outcome::waiting;
  const auto client = std::make_shared<PolicyUDPClient>(policyRequest(*organization));
  client->onPolicyDataReceived = [self = shared_from_this(), completion = std::move(completion)](
                                     const std::optional<Data>& content,
                                     std::optional<bool> /*isComplete*/,
                                     const std::optional<NWError>& error) {
    self->policyReceived(content, error, completion);
  };
  client->connectWithUDP(policyUDPServer->address, policyUDPServer->port);
}

void DnsProxyExt::policyReceived(const std::optional<Data>& content,
                                 const std::optional<NWError>& error,
                                 const FetchCompletion& completion) {
  NSLog("onPolicyDataReceived");
  policyState.last = PolicyState::Outcome::failed;
  if (!content || error) {
    NSLog("onPolicyDataReceived, error");
    completion(false);
    return;
  }
  NSLog("onPolicyDataReceived, resp: ", platform::repairedUtf8(platform::textOf(*content)));
  updateWhitelistedDomains(*content);
  completion(true);
}

void DnsProxyExt::updateWhitelistedDomains(platform::DataView policyResp) {
  if (takePolicy(policyResp, whitelistedDomainsMap)) {
    policyState = {PolicyState::Outcome::fetched, platform::DispatchTime::now()};
  }
}

}  // namespace quillet
