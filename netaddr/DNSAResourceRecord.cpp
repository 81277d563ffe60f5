#include "netaddr/DNSAResourceRecord.h"

namespace quillet {

void DNSAResourceRecord::decodeFromResource(const DNSResourceRecord& record) {
  ip = IPAddress::addressWithData(record.data);
}

platform::Data DNSAResourceRecord::encodeData() const { return ip ? ip->data() : platform::Data(); }

}  // namespace quillet
