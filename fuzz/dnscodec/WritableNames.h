#pragma once

#include <algorithm>
#include <string_view>

#include "dnscodec/DNSMessage.h"

namespace quillet::test {

/// Whether a name can be read again as it was written. One with an empty piece cannot, since that
/// reads as the end: labels may hold dots, and a pointer to the root adds one.
inline bool isWritable(std::string_view name) {
  return name == "." || !(name.starts_with('.') || name.ends_with('.') ||
                          name.find("..") != std::string_view::npos);
}

/// The same for all names of a message.
inline bool hasWritableNames(const DNSMessage& message) {
  const auto isFine = [](const auto& element) { return isWritable(element->name); };
  return std::ranges::all_of(message.questions, isFine) &&
         std::ranges::all_of(message.answers, isFine) &&
         std::ranges::all_of(message.authorityRecords, isFine) &&
         std::ranges::all_of(message.additionalRecords, isFine);
}

}  // namespace quillet::test
