#include "demo/DemoAnswer.h"

#include "demo/DemoAddress.h"
#include "dns_tools/HostRecord.h"
#include "dns_tools/InternetClass.h"
#include "dns_tools/OperationCode.h"
#include "dns_tools/Record.h"
#include "dns_tools/RecordType.h"
#include "dns_tools/ReturnCode.h"

namespace quillet {

using namespace DnsToolsSocket;

namespace {

constexpr std::uint32_t kTtl = 60;
constexpr std::size_t kHeaderSize = 12;
constexpr std::uint8_t kResponseBit = 0x80;  // in the third octet

// "1 . alpn=h2" (RFC 9460, section 2.2): priority 1, the root as target, parameter 1 with one
// protocol.
const platform::Data kHttpsData{0, 1, 0, 0, 1, 0, 3, 2, 'h', '2'};

std::optional<RecordValue> recordFor(const Question& question) {
  if (question.internetClass != InternetClass::internet) {
    return std::nullopt;
  }
  const std::string& name = question.name;
  switch (question.type) {
    case RecordType::host:
      return HostRecord<IPv4>(name, false, question.internetClass, kTtl, demoIPv4(name));
    case RecordType::host6:
      return HostRecord<IPv6>(name, false, question.internetClass, kTtl, demoIPv6(name));
    case RecordType::HTTPSSVC:
      return Record(name, false, question.internetClass, kTtl, question.type, kHttpsData);
    default:
      return std::nullopt;
  }
}

Message emptyAnswer(std::uint16_t id) {
  Message answer;
  answer.id = id;
  answer.type = MessageType::response;
  answer.recursionAvailable = true;
  return answer;
}

}  // namespace

std::optional<Message> answerTo(const Message& query) {
  if (query.type != MessageType::query) {
    return std::nullopt;
  }
  Message answer = emptyAnswer(query.id);
  answer.operationCode = query.operationCode;
  answer.recursionDesired = query.recursionDesired;
  answer.questions = query.questions;
  if (query.operationCode != OperationCode::query) {
    answer.returnCode = ReturnCode::notImplemented;
  } else if (query.questions.size() != 1) {
    answer.returnCode = ReturnCode::formatError;
  } else if (auto record = recordFor(query.questions.front())) {
    answer.answers.push_back(*std::move(record));
  } else {
    answer.returnCode = ReturnCode::queryRefused;
  }
  return answer;
}

std::optional<Message> answerToUndecodable(platform::DataView datagram) {
  if (datagram.size() < kHeaderSize || (datagram[2] & kResponseBit) != 0) {
    return std::nullopt;
  }
  Message answer = emptyAnswer(static_cast<std::uint16_t>(datagram[0] << 8 | datagram[1]));
  answer.returnCode = ReturnCode::formatError;
  return answer;
}

}  // namespace quillet
