#include "dns_tools/TextRecord.h"

#include <string_view>
#include <utility>

#include "dns_tools/Reader.h"
#include "dns_tools/StructureText.h"
#include "dns_tools/Writer.h"

namespace DnsToolsSocket {

namespace {

constexpr std::size_t kMaxAttributeSize = 255;

}  // namespace

TextRecord::TextRecord(std::string name, bool unique, std::uint16_t internetClass,
                       std::uint32_t ttl, Attributes pairs)
    : ResourceRecord({std::move(name), unique, internetClass, ttl}), attributes(std::move(pairs)) {}

TextRecord::TextRecord(Head&& head, Reader& reader) : ResourceRecord(std::move(head)) {
  // A last string that runs past the end of RDATA is taken whole; what follows begins after it.
  const auto end = reader.readDataEnd();
  while (!reader.error() && reader.position() < end) {
    const auto text = reader.readCharacterString();
    const auto equals = text.find('=');
    if (equals == std::string_view::npos) {
      values.emplace_back(text);
    } else {
      attributes.insert_or_assign(std::string(text.substr(0, equals)), text.substr(equals + 1));
    }
  }
}

void TextRecord::describe(std::string& out) const {
  StructureText text(out, "TextRecord");
  describeHead(text);
  text.field("attributes", attributes).field("values", values);
}

std::unique_ptr<ResourceRecord> TextRecord::clone() const {
  return std::make_unique<TextRecord>(*this);
}

void TextRecord::writeData(Writer& writer) const {
  for (const auto& [key, value] : attributes) {
    const std::size_t size = key.size() + 1 + value.size();
    if (size > kMaxAttributeSize) {
      writer.fail(EncodeError::attributeTooLong);
      return;
    }
    writer.writeIntegers(static_cast<std::uint8_t>(size));
    writer.writeBytes(platform::bytesOf(key));
    writer.writeIntegers(static_cast<std::uint8_t>('='));
    writer.writeBytes(platform::bytesOf(value));
  }
}

}  // namespace DnsToolsSocket
