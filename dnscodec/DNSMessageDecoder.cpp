#include "dnscodec/DNSMessageDecoder.h"

#include <utility>

#include "dnscodec/DNSHeaderDecoder.h"
#include "dnscodec/DNSQuestionDecoder.h"
#include "dnscodec/DNSResourceRecordDecoder.h"

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

}  // namespace quillet
