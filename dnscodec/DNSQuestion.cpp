#include "dnscodec/DNSQuestion.h"

#include <utility>

#include "dnscodec/DNSLabel.h"
#include "dnscodec/WireReader.h"

namespace quillet {

using platform::DataView;

void DNSQuestionDecoder::decodeQuestionInBuffer(DataView buffer, std::uint32_t& offset) {
  DecodeBudget budget;
  decodeQuestionInBuffer(buffer, offset, budget);
}

void DNSQuestionDecoder::decodeQuestionInBuffer(DataView buffer, std::uint32_t& offset,
                                                DecodeBudget& budget) {
  DNSLabelDecoder label;
  label.decodeLabelInBuffer(buffer, offset, budget);
  if (!label.name) {
    return;
  }
  WireReader reader(buffer, offset);
  const std::uint16_t type = reader.readUInt16();
  const std::uint16_t questionClass = reader.readUInt16();
  if (reader.failed()) {
    return;
  }
  question =
      std::make_shared<DNSQuestion>(DNSQuestion{*std::move(label.name), type, questionClass});
  offset = reader.offset();
}

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
