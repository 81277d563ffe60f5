#include "dnscodec/DNSLabelEncoder.h"

#include "dnscodec/WireWriter.h"

namespace quillet {

platform::Data DNSLabelEncoder::encode(std::string_view name) {
  WireWriter writer(WireWriter::maxNameSize(name));
  writer.writeName(name);
  return writer.finish();
}

}  // namespace quillet
