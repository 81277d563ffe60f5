#pragma once

#include <algorithm>

#include "dnscodec/DNSMessage.h"

namespace quillet::test {

/// Calls `use` with every name of the message.
template <class Use>
void forEachName(const DNSMessage& message, Use use) {
  std::ranges::for_each(message.questions, [&](const auto& entry) { use(entry->name); });
  for (const auto* section :
       {&message.answers, &message.authorityRecords, &message.additionalRecords}) {
    std::ranges::for_each(*section, [&](const auto& entry) { use(entry->name); });
  }
}

/// Whether all names can be read again as they are written. One with an empty piece cannot, since
/// that reads as the end: labels may hold dots, and a pointer to the root adds one.
inline bool hasWritableNames(const DNSMessage& message) {
  bool areWritable = true;
  forEachName(message, [&](const std::string& name) {
    areWritable &= name == "." || ("." + name + ".").find("..") == std::string::npos;
  });
  return areWritable;
}

}  // namespace quillet::test
