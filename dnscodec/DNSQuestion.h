#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "dnscodec/DNSLabel.h"
#include "dnscodec/WireWriter.h"
#include "platform/base/Data.h"

namespace quillet {

/// One entry of the question section (RFC 1035 section 4.1.2). The name has no trailing dot; the
/// root is ".".
struct DNSQuestion {
  std::string name;
  std::uint16_t type = 0;
  std::uint16_t questionClass = 0;

  bool operator==(const DNSQuestion&) const = default;
};

/// Reads one question. Made fresh for each.
class DNSQuestionDecoder {
 public:
  /// Reads the question at `offset` and moves it past the question. A broken one leaves
  /// `question` unset.
  void decodeQuestionInBuffer(platform::DataView buffer, std::uint32_t& offset);
  /// The same, charged to the budget of a whole message.
  void decodeQuestionInBuffer(platform::DataView buffer, std::uint32_t& offset,
                              DecodeBudget& budget);

  std::shared_ptr<DNSQuestion> question;
};

/// Writes questions.
class DNSQuestionEncoder {
 public:
  /// Name, type and class of a question.
  static platform::Data encode(const DNSQuestion& question);
  /// The same, after what the writer holds.
  static void encodeTo(WireWriter& writer, const DNSQuestion& question);
  /// The octets to make room for before the question is written.
  static std::size_t expectedSize(const DNSQuestion& question);
};

}  // namespace quillet
