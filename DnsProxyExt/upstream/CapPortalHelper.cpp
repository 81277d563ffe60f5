#include "DnsProxyExt/upstream/CapPortalHelper.h"

#include <DeploymentValues.h>

#include <random>
#include <utility>

#include "DnsProxyExt/settings/IdentityOption.h"
#include "dns_tools/InternetClass.h"
#include "dns_tools/Message.h"
#include "dns_tools/OperationCode.h"
#include "dns_tools/RecordType.h"
#include "dns_tools/ReturnCode.h"
#include "dnscodec/DNSParser.h"
#include "platform/base/Clock.h"
#include "platform/base/Utf8.h"
#include "platform/log/NSLog.h"
#include "platform/log/StandardOutput.h"

namespace quillet {

using DnsToolsSocket::Message;
using platform::Data;
using platform::NSLog;
using platform::NSLogStep;
using platform::NWError;
using platform::NWPath;

namespace {

std::int64_t wholeSecondsSince1970() {
  return static_cast<std::int64_t>(platform::secondsSince1970());
}

std::uint16_t randomIdentifier() {
  return static_cast<std::uint16_t>(std::random_device()() & 0xFFFFU);
}

Message registrationQuery() {
  using DnsToolsSocket::InternetClass;
  using DnsToolsSocket::RecordType;
  Message query;
  query.id = randomIdentifier();
  query.type = DnsToolsSocket::MessageType::query;
  query.operationCode = DnsToolsSocket::OperationCode::query;
  query.authoritativeAnswer = true;
  query.returnCode = DnsToolsSocket::ReturnCode::noError;
  query.questions.push_back({.name = deployment::kCaptivePortalHost,
                             .type = RecordType::host,
                             .unique = false,
                             .internetClass = InternetClass::internet});
  return query;
}

/// The bytes as text, empty when they are none.
std::string_view validText(const Data& bytes) {
  const auto text = platform::textOf(bytes);
  return platform::isValidUtf8(text) ? text : std::string_view();
}

}  // namespace

CapPortalHelper::UdpHandler::UdpHandler(Data req) : PolicyUDPClient(std::move(req), "UdpHandler") {
  logTag = "[CapPortalHelper]:";
}

CapPortalHelper::CapPortalHelper(std::vector<std::string> portalIps) : ips(std::move(portalIps)) {
  NSLog(logTag, ": init,  ips - ", ips);
}

void CapPortalHelper::checkRegistration() {
  NSLogStep(logTag, " - check Registration");
  const auto now = wholeSecondsSince1970();
  if (static_cast<double>(now - lastRegistrationTime) > doRegistrationEach) {
    lastRegistrationTime = now;
    sendCapPortalRegRequest(ips);
  }
}

void CapPortalHelper::sendCapPortalRegRequest(const std::vector<std::string>& to) {
  const platform::ActivityScope apart(nullptr);  // no part of the flow that it is sent for
  NSLog(logTag, " sendCapPortalRegRequest");
  const auto datagram = registration();
  if (!datagram) {
    return;
  }
  for (const auto& ip : to) {
    NSLog(logTag, ", sendCapPortalRegRequest, connecting to ", ip);
    const auto client = std::make_shared<UdpHandler>(*datagram);
    client->onPolicyDataReceived =
        [self = shared_from_this(), ip](
            const std::optional<Data>& content, std::optional<bool> /*isComplete*/,
            const std::optional<NWError>& error) { self->answered(ip, content, error); };
    client->connectWithUDP(ip, port);
  }
}

std::optional<Data> CapPortalHelper::registration() const {
  const auto query = registrationQuery();
  NSLog(logTag, ", sendCapPortalRegRequest, serializing query");
  const auto serialized = query.serialize();
  if (!serialized) {
    NSLog(logTag, " error of serialization, ", serialized.error());
    return std::nullopt;
  }
  NSLog(logTag, ", sendCapPortalRegRequest, serialized data - ", serialized->size());
  auto injected = DNSParser::injectFlagsToDatagrams(
      {*serialized}, DNSParser::Flags{{IdentityOption::kMarker, "1"}});
  NSLog(logTag, ", sendCapPortalRegRequest, injected data - ", injected.size());
  return std::move(injected.front());
}

void CapPortalHelper::answered(const std::string& ip, const std::optional<Data>& content,
                               const std::optional<NWError>& error) {
  if (error) {
    NSLog(logTag, ", udp error - ", std::optional(platform::description(*error)), ", ip - ", ip);
    return;
  }
  if (!content) {
    NSLog(logTag, ", udp received  - data is nil");
    return;
  }
  NSLog(logTag, ", udp received - ", validText(*content));
  lastRegistrationTime = wholeSecondsSince1970();
  if (const auto message = Message::deserialize(*content)) {
    NSLog(logTag, ", udp received, udp - ", message->debugDescription());
  } else {
    NSLog("error of deserialization");
  }
}

void CapPortalHelper::startConnectivityListener() { startConnectivityListener(nullptr); }

void CapPortalHelper::startConnectivityListener(ConnectivityDidChange connectivityDidChanged) {
  NSLog(logTag, ": current path: ", monitor.currentPath());
  monitor.pathUpdateHandler = [weak = weak_from_this(),
                               callback = std::move(connectivityDidChanged)](const NWPath& path) {
    if (const auto self = weak.lock()) {
      self->pathChanged(path, callback);
    }
  };
  monitor.start(platform::DispatchQueue::global());
}

void CapPortalHelper::pathChanged(const NWPath& path, const ConnectivityDidChange& callback) {
  NSLog(logTag, " path: ", path);
  if (path.status() == NWPath::Status::satisfied) {
    NSLog(logTag, "  connected!");
    sendCapPortalRegRequest(ips);
    keepRegistering();
  } else {
    NSLog(logTag, " ", path.status(), ": No connection.");
    sendCapPortalRegRequest(ips);
  }
  if (callback) {
    callback(path);
  }
  platform::printLine(path.isExpensive() ? "true" : "false");
}

void CapPortalHelper::keepRegistering() {
  doRegistrationTimer =
      platform::Timer::scheduled(doRegistrationEach, true, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
          self->sendCapPortalRegRequest(self->ips);
        }
      });
}

void CapPortalHelper::stopConnectivityListener() {
  monitor.cancel();
  if (doRegistrationTimer) {
    doRegistrationTimer->invalidate();
  }
}

}  // namespace quillet
