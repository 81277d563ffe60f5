#pragma once

#include <memory>
#include <vector>

#include "dnscodec/DNSHeader.h"
#include "dnscodec/DNSQuestion.h"
#include "dnscodec/DNSResourceRecord.h"

namespace quillet {

/// A message taken apart. A copy has its own header and lists; the lists hold the same questions
/// and records.
struct DNSMessage {
  using Questions = std::vector<std::shared_ptr<DNSQuestion>>;
  using Records = std::vector<std::shared_ptr<DNSResourceRecord>>;

  DNSHeader header;
  Questions questions;
  Records answers;
  Records authorityRecords;
  Records additionalRecords;
};

}  // namespace quillet
