#pragma once

#include <cstdint>
#include <optional>

#include "dnscodec/DNSMessage.h"
#include "dnscodec/WireReader.h"
#include "platform/foundation/Data.h"

namespace quillet {

/// Takes a message apart. Made fresh for each.
class DNSMessageDecoder {
 public:
  /// Reads the message that `buffer` begins with; octets behind its last record are ignored. A broken
  /// element, or a count that promises more than there is, leaves `message` unset.
  void decodeMessageInBuffer(platform::DataView buffer);

  std::optional<DNSMessage> message;

 private:
  bool decodeHeader(platform::DataView buffer, std::uint32_t& offset, DNSMessage& into);
  bool decodeQuestions(std::uint16_t count, platform::DataView buffer, std::uint32_t& offset,
                       DNSMessage& into);
  bool decodeResourceRecords(std::uint16_t count, platform::DataView buffer, std::uint32_t& offset,
                             DNSMessage::Records& into);

  DecodeBudget budget_;
};

}  // namespace quillet
