#pragma once

#include <map>
#include <string>

#include "DnsProxyExt/Utils.h"

namespace quillet {

/// Puts longer texts before shorter ones, texts of one length in their own order.
struct LongestFirst {
  bool operator()(const std::string& left, const std::string& right) const {
    return left.size() != right.size() ? left.size() > right.size() : left < right;
  }
};

/// A domain fragment to the server that answers for it. Walked from the longest fragment to the
/// shortest, so that where several match, the most particular one decides.
using DomainMap = std::map<std::string, DNSHostRef, LongestFirst>;

}  // namespace quillet
