#include "programs/quillet_dns_proxy/VendorData.h"

#include <cerrno>
#include <fstream>
#include <system_error>

#include "platform/foundation/JSONValue.h"

namespace quillet {

namespace {

constexpr char kVendorDataOption[] = "VendorData";

using Text = tl::expected<std::string, std::string>;

tl::unexpected<std::string> complaint(const std::filesystem::path& file, const std::string& what) {
  return tl::unexpected<std::string>(file.string() + ": " + what);
}

/// The file's text, up to the greatest size of a JSON text.
Text readText(const std::filesystem::path& file) {
  std::error_code notThere;
  const auto status = std::filesystem::status(file, notThere);
  if (notThere) {
    return complaint(file, notThere.message());
  }
  if (!std::filesystem::is_regular_file(status)) {
    return complaint(file, "not a regular file");
  }
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    return complaint(file, std::generic_category().message(errno));
  }
  std::string text(platform::kMaxJSONSize + 1, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(stream.gcount()));
  if (text.size() > platform::kMaxJSONSize) {
    return complaint(file, "larger than " + std::to_string(platform::kMaxJSONSize) + " bytes");
  }
  return text;
}

}  // namespace

tl::expected<std::optional<platform::NEProviderOptions>, std::string> readProviderOptions(
    const std::optional<std::filesystem::path>& file) {
  if (!file) {
    return std::nullopt;
  }
  const auto text = readText(*file);
  if (!text) {
    return tl::unexpected<std::string>(text.error());
  }
  auto json = platform::parseJSON(*text);
  if (!json) {
    return complaint(*file, "not valid JSON");
  }
  if (!json->is_object()) {
    return complaint(*file, "not a JSON object");
  }
  platform::NEProviderOptions options;
  options.emplace(kVendorDataOption, *std::move(json));
  return options;
}

}  // namespace quillet
