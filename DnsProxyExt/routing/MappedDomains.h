#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "DnsProxyExt/routing/DomainMap.h"

namespace quillet {

/// An entry of a "mappedDomains" setting, as it is written.
struct MappedDomain {
  std::string fragment;
  /// What follows the first colon; absent without one.
  std::optional<std::string> server;
};

/// The entries in their order, those that map nothing too.
std::vector<MappedDomain> mappedDomainsIn(std::string_view text);

/// The map that a "mappedDomains" setting writes as `[corp:10.1.1.1,lab:10.1.1.2:5300]`. Any
/// character may stand in place of each bracket; blanks are part of what they stand in. Of an entry
/// with more than three parts only the first two count. A later entry replaces an earlier one for
/// the same fragment.
///
/// What is malformed maps nothing and spoils nothing else: an entry without a colon is passed over,
/// a text of less than two characters is the empty map.
DomainMap parseMappedDomains(std::string_view text);

}  // namespace quillet
