#include "dns_tools/ResourceRecord.h"

#include "dns_tools/ClassWord.h"
#include "dns_tools/StructureText.h"
#include "dns_tools/Writer.h"

namespace DnsToolsSocket {

tl::expected<void, EncodeError> ResourceRecord::serialize(platform::Data& onto,
                                                          Labels& labels) const {
  Writer writer(onto, labels);
  write(writer);
  return writer.finish();
}

void ResourceRecord::write(Writer& writer) const {
  writer.writeName(head_.name);
  writer.writeIntegers(type(), ClassWord(head_.unique, head_.internetClass).word(), head_.ttl);
  const auto begin = writer.beginData();
  writeData(writer);
  writer.endData(begin);
}

void ResourceRecord::describeHead(StructureText& text) const {
  text.field("name", head_.name)
      .field("unique", head_.unique)
      .field("internetClass", head_.internetClass)
      .field("ttl", head_.ttl);
}

}  // namespace DnsToolsSocket
