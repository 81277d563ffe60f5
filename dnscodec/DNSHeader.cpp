#include "dnscodec/DNSHeader.h"

#include "dnscodec/WireReader.h"

namespace quillet {

void DNSHeaderDecoder::decodeHeaderInBuffer(platform::DataView buffer, std::uint32_t& offset) {
  using Bits = HeaderBits;
  WireReader reader(buffer, offset);
  DNSHeader read;
  read.id = reader.readUInt16();
  const std::uint8_t first = reader.readUInt8();
  read.isQuery = (first & Bits::kResponse) == 0;
  read.opCode = static_cast<std::uint16_t>(first >> Bits::kOpCodeShift & Bits::kCodeMask);
  read.authoritativeAnswer = (first & Bits::kAuthoritativeAnswer) != 0;
  read.truncated = (first & Bits::kTruncated) != 0;
  read.recursionDesired = (first & Bits::kRecursionDesired) != 0;
  const std::uint8_t second = reader.readUInt8();
  read.recursionAvailable = (second & Bits::kRecursionAvailable) != 0;
  read.authenticatedData = (second & Bits::kAuthenticatedData) != 0;
  read.checkingDisabled = (second & Bits::kCheckingDisabled) != 0;
  read.responseCode = second & Bits::kCodeMask;
  read.questionCount = reader.readUInt16();
  read.answerRecordCount = reader.readUInt16();
  read.authorityRecordCount = reader.readUInt16();
  read.additionalRecordCount = reader.readUInt16();
  if (!reader.failed()) {
    header = read;
    offset = reader.offset();
  }
}

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
