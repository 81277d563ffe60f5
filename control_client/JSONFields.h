#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/store/JSONValue.h"

namespace quilletctl {

/// Members of an object as the proxy sends them. One that is missing or of another type, or of a
/// value that is no object, is absent: what can be shown is shown.

/// null when there is no such member.
const platform::JSONValue& memberOf(const platform::JSONValue& object, const char* name);

std::optional<std::string> textOf(const platform::JSONValue& object, const char* name);
std::optional<bool> flagOf(const platform::JSONValue& object, const char* name);
std::optional<std::uint64_t> countOf(const platform::JSONValue& object, const char* name);
/// Not negative.
std::optional<double> numberOf(const platform::JSONValue& object, const char* name);

}  // namespace quilletctl
