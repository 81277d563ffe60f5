#include "netaddr/DNSAResourceRecord.h"

namespace quillet {

void DNSAResourceRecord::decodeFromResource(const DNSResourceRecord& record) {
  ip = IPAddress::addressWithData(record.data);
}

platform::Data DNSAResourceRecord::encodeData() const { return ip ? ip->data() : platform::Data(); }

std::shared_ptr<DNSResourceRecord> DNSAResourceRecord::copy() const {
  return std::shared_ptr<DNSResourceRecord>(new DNSAResourceRecord(*this));
}

}  // namespace quillet
