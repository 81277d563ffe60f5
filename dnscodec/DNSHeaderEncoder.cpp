#include "dnscodec/DNSHeaderEncoder.h"

#include "dnscodec/HeaderBits.h"

namespace quillet {

namespace {

std::uint8_t bit(bool isSet, std::uint8_t mask) { return isSet ? mask : std::uint8_t{0}; }

std::uint8_t firstFlags(const DNSHeader& header) {
  using Bits = HeaderBits;
  return static_cast<std::uint8_t>(bit(!header.isQuery, Bits::kResponse) |
                                   (header.opCode & Bits::kCodeMask) << Bits::kOpCodeShift |
                                   bit(header.authoritativeAnswer, Bits::kAuthoritativeAnswer) |
                                   bit(header.truncated, Bits::kTruncated) |
                                   bit(header.recursionDesired, Bits::kRecursionDesired));
}

std::uint8_t secondFlags(const DNSHeader& header) {
  using Bits = HeaderBits;
  return static_cast<std::uint8_t>(bit(header.recursionAvailable, Bits::kRecursionAvailable) |
                                   bit(header.authenticatedData, Bits::kAuthenticatedData) |
                                   bit(header.checkingDisabled, Bits::kCheckingDisabled) |
                                   (header.responseCode & Bits::kCodeMask));
}

}  // namespace

platform::Data DNSHeaderEncoder::encode(const DNSHeader& header) {
  WireWriter writer(HeaderBits::kHeaderSize);
  encodeTo(writer, header);
  return writer.finish();
}

void DNSHeaderEncoder::encodeTo(WireWriter& writer, const DNSHeader& header) {
  writer.writeUInt16(header.id);
  writer.writeUInt8(firstFlags(header));
  writer.writeUInt8(secondFlags(header));
  writer.writeUInt16(header.questionCount);
  writer.writeUInt16(header.answerRecordCount);
  writer.writeUInt16(header.authorityRecordCount);
  writer.writeUInt16(header.additionalRecordCount);
}

}  // namespace quillet
