#pragma once

#include "dnscodec/DNSQuestion.h"
#include "platform/foundation/Data.h"

namespace quillet {

/// Writes questions.
class DNSQuestionEncoder {
 public:
  /// Name, type and class of a question.
  static platform::Data encode(const DNSQuestion& question);
};

}  // namespace quillet
