#include "dnscodec/QuestionOctets.h"

#include "dnscodec/DNSHeader.h"
#include "dnscodec/WireReader.h"
#include "dnscodec/WireWriter.h"

namespace quillet {

using platform::DataView;

namespace {

constexpr std::uint8_t kPointerBits = 0xC0;
constexpr std::size_t kTypeAndClass = 4;

/// Moves `reader` past the pointer whose first octet is `high`; false when it leads elsewhere
/// than to earlier questions.
bool passPointer(WireReader& reader, std::uint8_t high) {
  const std::size_t start = reader.offset() - 1;
  const std::size_t target =
      static_cast<std::size_t>(high - kPointerBits) << 8 | reader.readUInt8();
  return target >= HeaderBits::kHeaderSize && target < start;
}

/// Moves `reader` past a name.
bool passName(WireReader& reader) {
  while (!reader.failed()) {
    const std::uint8_t length = reader.readUInt8();
    if (length >= kPointerBits) {
      return passPointer(reader, length);
    }
    if (length == 0) {
      break;
    }
    reader.readBytes(length);
  }
  return !reader.failed();
}

/// The octets of the first `count` questions; absent when they are not all there.
std::optional<DataView> questionOctets(DataView datagram, std::size_t count) {
  WireReader reader(datagram, HeaderBits::kHeaderSize);
  for (; count > 0; --count) {
    if (!passName(reader)) {
      return std::nullopt;
    }
    reader.readBytes(kTypeAndClass);
  }
  if (reader.failed()) {
    return std::nullopt;
  }
  return datagram.subspan(HeaderBits::kHeaderSize, reader.offset() - HeaderBits::kHeaderSize);
}

}  // namespace

std::optional<platform::Data> withQuestionOctets(DataView datagram,
                                                 const DNSResourceRecord& record) {
  DNSHeaderDecoder decoder;
  std::uint32_t offset = 0;
  decoder.decodeHeaderInBuffer(datagram, offset);
  if (!decoder.header) {
    return std::nullopt;
  }
  auto& header = *decoder.header;
  const auto questions = questionOctets(datagram, header.questionCount);
  if (!questions) {
    return std::nullopt;
  }
  header.answerRecordCount = 0;
  header.authorityRecordCount = 0;
  header.additionalRecordCount = 1;
  WireWriter writer(HeaderBits::kHeaderSize + questions->size() + record.expectedSize());
  DNSHeaderEncoder::encodeTo(writer, header);
  writer.writeBytes(*questions);
  record.encodeTo(writer);
  return writer.size() <= kMaxDatagramSize ? std::optional(writer.finish()) : std::nullopt;
}

}  // namespace quillet
