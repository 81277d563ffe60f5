#include "dnscodec/DNSQuestionEncoder.h"

#include "dnscodec/WireWriter.h"

namespace quillet {

platform::Data DNSQuestionEncoder::encode(const DNSQuestion& question) {
  platform::Data bytes;
  bytes.reserve(question.name.size() + 6);
  WireWriter writer(bytes);
  writer.writeName(question.name);
  writer.writeUInt16(question.type);
  writer.writeUInt16(question.questionClass);
  return bytes;
}

}  // namespace quillet
