#pragma once

#include <cstdint>
#include <memory>

#include "dnscodec/DNSQuestion.h"
#include "dnscodec/DecodeBudget.h"
#include "platform/foundation/Data.h"

namespace quillet {

/// Reads one question. Made fresh for each.
class DNSQuestionDecoder {
 public:
  /// Reads the question at `offset` and moves it behind the question. A broken one leaves
  /// `question` unset.
  void decodeQuestionInBuffer(platform::DataView buffer, std::uint32_t& offset);
  /// The same, charged to the budget of a whole message.
  void decodeQuestionInBuffer(platform::DataView buffer, std::uint32_t& offset,
                              DecodeBudget& budget);

  std::shared_ptr<DNSQuestion> question;
};

}  // namespace quillet
