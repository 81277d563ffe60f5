#include "DnsProxyExt/intake/Decoding.h"

#include "dns_tools/RecordType.h"
#include "platform/log/NSLog.h"

namespace quillet {

using DnsToolsSocket::Message;
using platform::NSLogStep;

namespace {

void logAnswers(const Message& message) {
  if (message.answers.empty()) {
    return;
  }
  const auto& answer = *message.answers.front();
  NSLogStep("DNS response,  answers count: ", message.answers.size(), ", ttl = ", answer.ttl(),
            ", name = ", answer.name());
  if (!message.questions.empty()) {
    const auto type = message.questions.front().type;
    NSLogStep("Response: rawType = ", type,
              ", debugDesc = ", DnsToolsSocket::typeDescription(type));
  }
}

void logMessage(const Message& message, std::string_view label) {
  NSLogStep("decode ", label, ":", message);
  logAnswers(message);
  for (const auto& question : message.questions) {
    NSLogStep("Question: rawType = ", question.type,
              ", debugDesc = ", DnsToolsSocket::typeDescription(question.type), ",");
  }
}

}  // namespace

Decoding::Decoded Decoding::request(platform::DataView data, std::int64_t flowHash) {
  NSLogStep("---decodeDNSRequest---,data size = ", data.size(), ", hashFlow:", flowHash);
  return message(data, "request");
}

Decoding::Decoded Decoding::response(platform::DataView data, std::int64_t flowHash) const {
  relayLog_.stepTwice("***decodeDNSResponse***,data size = ", data.size(), ", flowHash:", flowHash);
  return message(data, "response");
}

Decoding::Decoded Decoding::message(platform::DataView data, std::string_view label) {
  auto decoded = Message::deserialize(data);
  if (!decoded) {
    NSLogStep("decodeDNSResponse error");
    return std::nullopt;
  }
  if (platform::logsSteps()) {
    logMessage(*decoded, label);
  }
  return *std::move(decoded);
}

std::optional<std::string> Decoding::questionName(const Decoded& message) {
  if (!message || message->questions.empty()) {
    return std::nullopt;
  }
  return message->questions.front().name;
}

}  // namespace quillet
