#pragma once

#include <cstdint>
#include <memory>

#include "dnscodec/DNSQuestion.h"
#include "dnscodec/WireReader.h"
#include "platform/foundation/Data.h"

namespace quillet {

/// Reads one question. Made fresh for each.
class DNSQuestionDecoder {
 public:
  DNSQuestionDecoder() = default;
  /// Charges what it reads to the budget of a whole message.
  explicit DNSQuestionDecoder(DecodeBudget& shared) : budget_(&shared) {}

  /// Reads the question at `offset` and moves it behind the question. A broken one leaves `question` unset.
  void decodeQuestionInBuffer(platform::DataView buffer, std::uint32_t& offset);

  std::shared_ptr<DNSQuestion> question;

 private:
  DecodeBudget own_;
  DecodeBudget* budget_ = nullptr;
};

}  // namespace quillet
