#include "dnscodec/DNSMessageEncoder.h"

#include <array>

#include "dnscodec/DNSHeaderEncoder.h"
#include "dnscodec/DNSQuestionEncoder.h"
#include "dnscodec/HeaderBits.h"
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

using Sections = std::array<const DNSMessage::Records*, 3>;

/// The lists of records in the order in which a message holds them.
Sections recordSections(const DNSMessage& message) {
  return {&message.answers, &message.authorityRecords, &message.additionalRecords};
}

std::size_t expectedSize(const DNSMessage& message) {
  std::size_t size = HeaderBits::kHeaderSize;
  for (const auto& question : message.questions) {
    size += DNSQuestionEncoder::expectedSize(*question);
  }
  for (const auto* section : recordSections(message)) {
    for (const auto& record : *section) {
      size += record->expectedSize();
    }
  }
  return size;
}

}  // namespace

platform::Data DNSMessageEncoder::encode(const DNSMessage& message) {
  WireWriter writer(expectedSize(message));
  DNSHeaderEncoder::encodeTo(writer, countedHeader(message));
  for (const auto& question : message.questions) {
    DNSQuestionEncoder::encodeTo(writer, *question);
  }
  for (const auto* section : recordSections(message)) {
    for (const auto& record : *section) {
      record->encodeTo(writer);
    }
  }
  return writer.finish();
}

}  // namespace quillet
