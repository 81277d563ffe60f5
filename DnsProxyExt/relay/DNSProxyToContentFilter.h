#pragma once

#include <string>

namespace quillet {

/// The provider as its command link holds it.
class DNSProxyToContentFilter {
 public:
  DNSProxyToContentFilter() = default;
  DNSProxyToContentFilter(const DNSProxyToContentFilter&) = delete;
  DNSProxyToContentFilter& operator=(const DNSProxyToContentFilter&) = delete;
  virtual ~DNSProxyToContentFilter() = default;

  virtual void cfReceivedNewMessage(const std::string& msg) = 0;
};

}  // namespace quillet
