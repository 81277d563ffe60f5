#pragma once

#include "DnsProxyExt/DnsProxyExt.h"

namespace quillet {

/// The provider for safe search: leaves every answer to the filtering service, which it reaches on
/// the standard DNS port. Every query goes there unchanged, without identity and without a look at
/// the maps.
class SafeSearchDNSProxyProvider final : public DnsProxyExt {
 public:
  void connectToDNS(const Flow& flow, std::optional<std::vector<platform::Data>> data,
                    std::optional<std::vector<platform::NWHostEndpoint>> endpoints,
                    const std::optional<platform::Error>& error) override;
  /// Does nothing.
  void startFetchingPolicy() override {}

  [[nodiscard]] Explanation explain(const std::string& questionName,
                                    const std::string& application) const override;
  [[nodiscard]] std::set<std::string> serverTexts(Route::Rule rule) const override;

  /// Takes one answer as the provider does, but says only that there is none when there is none.
  void received(Answer answer);

 protected:
  [[nodiscard]] std::string_view className() const override { return "SafeSearchDNSProxyProvider"; }
};

}  // namespace quillet
