#include "dnscodec/DNSLabelEncoder.h"

#include "dnscodec/WireWriter.h"

namespace quillet {

platform::Data DNSLabelEncoder::encode(std::string_view name) {
  platform::Data bytes;
  bytes.reserve(name.size() + 2);
  WireWriter(bytes).writeName(name);
  return bytes;
}

}  // namespace quillet
