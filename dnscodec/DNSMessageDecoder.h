#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "dnscodec/DNSMessage.h"
#include "dnscodec/DecodeBudget.h"
#include "platform/foundation/Data.h"

namespace quillet {

/// Takes a message apart. Made fresh for each.
class DNSMessageDecoder {
 public:
  /// Reads the message that `buffer` begins with; octets behind its last record are ignored. A
  /// broken element, a count that promises more than there is and names that multiply beyond a
  /// `DecodeBudget` leave `message` unset.
  void decodeMessageInBuffer(platform::DataView buffer);

  std::optional<DNSMessage> message;

 private:
  // Each reads one part of the message at `offset` and moves it behind that part; false when it is
  // broken.
  bool decodeHeaderWithBuffer(platform::DataView buffer, std::uint32_t& offset, DNSHeader& header);
  bool decodeQuestionsWithCount(std::size_t count, platform::DataView buffer, std::uint32_t& offset,
                                DNSMessage::Questions& questions);
  bool decodeResourceRecordWithCount(std::size_t count, platform::DataView buffer,
                                     std::uint32_t& offset, DNSMessage::Records& records);

  DecodeBudget budget_;
};

}  // namespace quillet
