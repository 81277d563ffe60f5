#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "dnscodec/DNSHeader.h"
#include "dnscodec/DNSLabel.h"
#include "dnscodec/DNSQuestion.h"
#include "dnscodec/DNSResourceRecord.h"
#include "platform/base/Data.h"
#include "platform/base/SmallList.h"

namespace quillet {

/// A message taken apart. A copy has its own header and lists; the lists hold the same questions
/// and records.
struct DNSMessage {
  using Questions = platform::SmallList<std::shared_ptr<DNSQuestion>>;
  using Records = platform::SmallList<std::shared_ptr<DNSResourceRecord>>;

  // A defaulted constructor would clear all octets before it sets the members.
  DNSMessage() {}  // NOLINT(modernize-use-equals-default)

  DNSHeader header;
  Questions questions;
  Records answers;
  Records authorityRecords;
  Records additionalRecords;
};

/// Takes a message apart. Made fresh for each.
class DNSMessageDecoder {
 public:
  /// Reads the message that `buffer` begins with; octets past its last record are ignored. A
  /// broken element, a count that promises more than there is and names that multiply beyond a
  /// `DecodeBudget` leave `message` unset.
  void decodeMessageInBuffer(platform::DataView buffer);

  std::optional<DNSMessage> message;

 private:
  // Each reads one part of the message at `offset` and moves it past that part; false when it is
  // broken.
  bool decodeHeaderWithBuffer(platform::DataView buffer, std::uint32_t& offset, DNSHeader& header);
  bool decodeQuestionsWithCount(std::size_t count, platform::DataView buffer, std::uint32_t& offset,
                                DNSMessage::Questions& questions);
  bool decodeResourceRecordWithCount(std::size_t count, platform::DataView buffer,
                                     std::uint32_t& offset, DNSMessage::Records& records);

  DecodeBudget budget_;
};

/// Puts messages together.
class DNSMessageEncoder {
 public:
  /// The whole message. Its four counts are those of its lists (their low 16 bits).
  static platform::Data encode(const DNSMessage& message);
};

}  // namespace quillet
