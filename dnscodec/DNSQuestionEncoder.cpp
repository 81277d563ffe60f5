#include "dnscodec/DNSQuestionEncoder.h"

namespace quillet {

platform::Data DNSQuestionEncoder::encode(const DNSQuestion& question) {
  WireWriter writer(expectedSize(question));
  encodeTo(writer, question);
  return writer.finish();
}

void DNSQuestionEncoder::encodeTo(WireWriter& writer, const DNSQuestion& question) {
  writer.writeName(question.name);
  writer.writeUInt16(question.type);
  writer.writeUInt16(question.questionClass);
}

std::size_t DNSQuestionEncoder::expectedSize(const DNSQuestion& question) {
  constexpr std::size_t kTypeAndClass = 4;
  return WireWriter::maxNameSize(question.name) + kTypeAndClass;
}

}  // namespace quillet
