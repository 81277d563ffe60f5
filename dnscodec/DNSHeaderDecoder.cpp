#include "dnscodec/DNSHeaderDecoder.h"

#include "dnscodec/HeaderBits.h"
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

}  // namespace quillet
