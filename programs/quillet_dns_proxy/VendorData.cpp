#include "programs/quillet_dns_proxy/VendorData.h"

#include <utility>

#include "DnsProxyExt/DnsProxyExt.h"
#include "platform/store/RegularFile.h"

namespace quillet {

namespace {

tl::unexpected<std::string> complaint(const std::filesystem::path& file, const std::string& what) {
  return tl::unexpected<std::string>(file.string() + ": " + what);
}

}  // namespace

tl::expected<platform::JSONDocument, std::string> readSettings(const std::filesystem::path& file) {
  const auto content = platform::readRegularFile(file, platform::kMaxJSONSize);
  if (!content) {
    return complaint(file, content.error().message());
  }
  auto json = platform::parseJSON(content->text);
  if (!json) {
    return complaint(file, platform::textOf(json.error()));
  }
  if (!json->value.is_object()) {
    return complaint(file, "not a JSON object");
  }
  return *std::move(json);
}

tl::expected<std::optional<platform::NEProviderOptions>, std::string> readProviderOptions(
    const std::optional<std::filesystem::path>& file) {
  if (!file) {
    return std::nullopt;
  }
  auto settings = readSettings(*file);
  if (!settings) {
    return tl::unexpected(std::move(settings.error()));
  }
  platform::NEProviderOptions options;
  options.emplace(DnsProxyExt::kVendorDataOption, std::move(settings->value));
  return options;
}

}  // namespace quillet
