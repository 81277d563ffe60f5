#pragma once

#include <cstddef>

#include "dnscodec/DNSQuestion.h"
#include "dnscodec/WireWriter.h"
#include "platform/foundation/Data.h"

namespace quillet {

/// Writes questions.
class DNSQuestionEncoder {
 public:
  /// Name, type and class of a question.
  static platform::Data encode(const DNSQuestion& question);
  /// The same behind what the writer holds.
  static void encodeTo(WireWriter& writer, const DNSQuestion& question);
  /// The octets to make room for before the question is written.
  static std::size_t expectedSize(const DNSQuestion& question);
};

}  // namespace quillet
