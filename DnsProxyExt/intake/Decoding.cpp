#include "DnsProxyExt/intake/Decoding.h"

#include "dns_tools/RecordType.h"
#include "platform/log/NSLog.h"

namespace quillet {

using DnsToolsSocket::Message;
using platform::NSLog;

namespace {

void logAnswers(const Message& message) {
  if (message.answers.empty()) {
    return;
  }
  const auto& answer = *message.answers.front();
  NSLog("DNS response,  answers count: ", message.answers.size(), ", ttl = ", answer.ttl(),
        ", name = ", answer.name());
  if (!message.questions.empty()) {
    const auto type = message.questions.front().type;
    NSLog("Response: rawType = ", type, ", debugDesc = ", DnsToolsSocket::typeDescription(type));
  }
}

}  // namespace

Decoding::Decoded Decoding::request(platform::DataView data, std::int64_t flowHash) {
  NSLog("---decodeDNSRequest---,data size = ", data.size(), ", hashFlow:", flowHash);
  return message(data, "request");
}

Decoding::Decoded Decoding::response(platform::DataView data, std::int64_t flowHash) const {
  relayLog_.twice("***decodeDNSResponse***,data size = ", data.size(), ", flowHash:", flowHash);
  return message(data, "response");
}

Decoding::Decoded Decoding::message(platform::DataView data, std::string_view label) {
  auto decoded = Message::deserialize(data);
  if (!decoded) {
    NSLog("decodeDNSResponse error");
    return std::nullopt;
  }
  NSLog("decode ", label, ":", *decoded);
  logAnswers(*decoded);
  for (const auto& question : decoded->questions) {
    NSLog("Question: rawType = ", question.type,
          ", debugDesc = ", DnsToolsSocket::typeDescription(question.type), ",");
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
