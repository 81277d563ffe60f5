#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "dnscodec/WireReader.h"
#include "platform/foundation/Data.h"

namespace quillet {

/// Reads one name, compressed or not. Made fresh for each.
class DNSLabelDecoder {
 public:
  DNSLabelDecoder() = default;
  /// Charges what it reads to the budget of a whole message.
  explicit DNSLabelDecoder(DecodeBudget& shared) : budget_(&shared) {}

  /// Reads the name at `offset` and moves it behind the name, behind the first pointer if there is one. A
  /// broken name leaves `name` unset.
  void decodeLabelInBuffer(platform::DataView buffer, std::uint32_t& offset);

  std::optional<std::string> name;

 private:
  DecodeBudget own_;
  DecodeBudget* budget_ = nullptr;
};

}  // namespace quillet
