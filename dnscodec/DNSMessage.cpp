#include "dnscodec/DNSMessage.h"

#include <array>
#include <utility>

#include "dnscodec/DNSHeader.h"
#include "dnscodec/DNSQuestion.h"
#include "dnscodec/DNSResourceRecord.h"
#include "dnscodec/WireWriter.h"

namespace quillet {

using platform::DataView;

namespace {

// The least that an element takes: a root name and the fixed fields.
constexpr std::size_t kMinQuestionSize = 5;
constexpr std::size_t kMinRecordSize = 11;

/// Whether `count` elements can stand in what is left, so that a count that lies reserves nothing.
bool fits(std::size_t count, std::size_t minSize, DataView buffer, std::uint32_t offset) {
  return count <= (buffer.size() - offset) / minSize;
}

}  // namespace

void DNSMessageDecoder::decodeMessageInBuffer(DataView buffer) {
  std::uint32_t offset = 0;
  DNSMessage& read = message.emplace();
  const auto& header = read.header;
  const bool isWhole =
      decodeHeaderWithBuffer(buffer, offset, read.header) &&
      decodeQuestionsWithCount(header.questionCount, buffer, offset, read.questions) &&
      decodeResourceRecordWithCount(header.answerRecordCount, buffer, offset, read.answers) &&
      decodeResourceRecordWithCount(header.authorityRecordCount, buffer, offset,
                                    read.authorityRecords) &&
      decodeResourceRecordWithCount(header.additionalRecordCount, buffer, offset,
                                    read.additionalRecords);
  if (!isWhole) {
    message.reset();
  }
}

bool DNSMessageDecoder::decodeHeaderWithBuffer(DataView buffer, std::uint32_t& offset,
                                               DNSHeader& header) {
  DNSHeaderDecoder decoder;
  decoder.decodeHeaderInBuffer(buffer, offset);
  header = decoder.header.value_or(DNSHeader());
  return decoder.header.has_value();
}

bool DNSMessageDecoder::decodeQuestionsWithCount(std::size_t count, DataView buffer,
                                                 std::uint32_t& offset,
                                                 DNSMessage::Questions& questions) {
  if (!fits(count, kMinQuestionSize, buffer, offset)) {
    return false;
  }
  questions.reserve(count);
  while (questions.size() < count) {
    DNSQuestionDecoder decoder;
    decoder.decodeQuestionInBuffer(buffer, offset, budget_);
    if (!decoder.question) {
      return false;
    }
    questions.push_back(std::move(decoder.question));
  }
  return true;
}

bool DNSMessageDecoder::decodeResourceRecordWithCount(std::size_t count, DataView buffer,
                                                      std::uint32_t& offset,
                                                      DNSMessage::Records& records) {
  if (!fits(count, kMinRecordSize, buffer, offset)) {
    return false;
  }
  records.reserve(count);
  while (records.size() < count) {
    DNSResourceRecordDecoder decoder;
    decoder.decodeResourceInBuffer(buffer, offset, budget_);
    if (!decoder.resource) {
      return false;
    }
    records.push_back(std::move(decoder.resource));
  }
  return true;
}

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
