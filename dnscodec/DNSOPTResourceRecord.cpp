#include "dnscodec/DNSOPTResourceRecord.h"

namespace quillet {

namespace {

constexpr int kExtendedRCodeShift = 24;
constexpr int kVersionShift = 16;
constexpr std::uint32_t kDnssecOk = 1U << 15;

}  // namespace

void DNSOPTResourceRecord::decodeFromResource(const DNSResourceRecord& record) {
  udpPayloadSize = record.resourceClass;
  extendedRCode = static_cast<std::uint8_t>(record.ttl >> kExtendedRCodeShift);
  version = static_cast<std::uint8_t>(record.ttl >> kVersionShift);
  dnssecOK = (record.ttl & kDnssecOk) != 0;
}

void DNSOPTResourceRecord::encodeTo(WireWriter& writer) const {
  const std::uint32_t fields = static_cast<std::uint32_t>(extendedRCode) << kExtendedRCodeShift |
                               static_cast<std::uint32_t>(version) << kVersionShift |
                               (dnssecOK ? kDnssecOk : 0);
  encodeAs(writer, udpPayloadSize, fields, data);
}

}  // namespace quillet
