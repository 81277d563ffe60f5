#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <tl/expected.hpp>

#include "platform/networkextension/NEDNSProxyProvider.h"
#include "platform/store/JSONDocument.h"

namespace quillet {

/// The JSON object of a file. The error is a line that names the file and says what is wrong with
/// it.
tl::expected<platform::JSONDocument, std::string> readSettings(const std::filesystem::path& file);

/// Provider options that hold the JSON object of `file` as "VendorData"; without a file there are
/// none. The error is that of `readSettings`.
tl::expected<std::optional<platform::NEProviderOptions>, std::string> readProviderOptions(
    const std::optional<std::filesystem::path>& file);

}  // namespace quillet
