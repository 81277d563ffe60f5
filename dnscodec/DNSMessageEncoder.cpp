#include "dnscodec/DNSMessageEncoder.h"

#include "dnscodec/DNSHeaderEncoder.h"
#include "dnscodec/DNSQuestionEncoder.h"
#include "dnscodec/WireWriter.h"

namespace quillet {

namespace {

template <class List>
std::uint16_t countOf(const List& list) {
  return static_cast<std::uint16_t>(list.size());
}

DNSHeader countedHeader(const DNSMessage& message) {
  auto header = message.header;
  header.questionCount = countOf(message.questions);
  header.answerRecordCount = countOf(message.answers);
  header.authorityRecordCount = countOf(message.authorityRecords);
  header.additionalRecordCount = countOf(message.additionalRecords);
  return header;
}

}  // namespace

platform::Data DNSMessageEncoder::encode(const DNSMessage& message) {
  auto bytes = DNSHeaderEncoder::encode(countedHeader(message));
  WireWriter writer(bytes);
  for (const auto& question : message.questions) {
    writer.writeBytes(DNSQuestionEncoder::encode(*question));
  }
  for (const auto* section :
       {&message.answers, &message.authorityRecords, &message.additionalRecords}) {
    for (const auto& record : *section) {
      writer.writeBytes(record->encode());
    }
  }
  return bytes;
}

}  // namespace quillet
