#include "dnscodec/DNSMessageDecoder.h"

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
bool fits(std::uint16_t count, std::size_t minSize, DataView buffer, std::uint32_t offset) {
  return count <= (buffer.size() - offset) / minSize;
}

}  // namespace

void DNSMessageDecoder::decodeMessageInBuffer(DataView buffer) {
  std::uint32_t offset = 0;
  DNSMessage read;
  if (!decodeHeader(buffer, offset, read)) {
    return;
  }
  const auto& header = read.header;
  if (decodeQuestions(header.questionCount, buffer, offset, read) &&
      decodeResourceRecords(header.answerRecordCount, buffer, offset, read.answers) &&
      decodeResourceRecords(header.authorityRecordCount, buffer, offset, read.authorityRecords) &&
      decodeResourceRecords(header.additionalRecordCount, buffer, offset,
                            read.additionalRecords)) {
    message = std::move(read);
  }
}

bool DNSMessageDecoder::decodeHeader(DataView buffer, std::uint32_t& offset, DNSMessage& into) {
  DNSHeaderDecoder decoder;
  decoder.decodeHeaderInBuffer(buffer, offset);
  if (!decoder.header) {
    return false;
  }
  into.header = *decoder.header;
  return true;
}

bool DNSMessageDecoder::decodeQuestions(std::uint16_t count, DataView buffer,
                                        std::uint32_t& offset, DNSMessage& into) {
  if (!fits(count, kMinQuestionSize, buffer, offset)) {
    return false;
  }
  into.questions.reserve(count);
  for (; count > 0; --count) {
    DNSQuestionDecoder decoder(budget_);
    decoder.decodeQuestionInBuffer(buffer, offset);
    if (!decoder.question) {
      return false;
    }
    into.questions.push_back(std::move(decoder.question));
  }
  return true;
}

bool DNSMessageDecoder::decodeResourceRecords(std::uint16_t count, DataView buffer,
                                              std::uint32_t& offset, DNSMessage::Records& into) {
  if (!fits(count, kMinRecordSize, buffer, offset)) {
    return false;
  }
  into.reserve(count);
  for (; count > 0; --count) {
    DNSResourceRecordDecoder decoder(budget_);
    decoder.decodeResourceInBuffer(buffer, offset);
    if (!decoder.resource) {
      return false;
    }
    into.push_back(std::move(decoder.resource));
  }
  return true;
}

}  // namespace quillet
