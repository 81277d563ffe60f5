#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Description.h"

namespace platform {

/// Any JSON value, printed through `describe` as the platform prints such values: texts inside
/// others in quotes, `["key": value]` for an object, `<null>` for null.
using JSONValue = nlohmann::json;
/// A name to any value, in the order of the names.
using JSONObject = JSONValue::object_t;

/// The greatest size of a JSON text, in bytes, and the greatest depth of its arrays and objects.
/// Beyond either a text does not parse: the library's own recursion and memory stay bounded.
inline constexpr std::size_t kMaxJSONSize = 1 << 20;
inline constexpr int kMaxJSONDepth = 64;

/// `text` parsed as one JSON value (RFC 8259), or absent when it is none or goes beyond the bounds
/// above.
std::optional<JSONValue> parseJSON(std::string_view text);

template <>
struct Describer<JSONValue> {
  static void describe(std::string& out, const JSONValue& value);
  static void debugDescribe(std::string& out, const JSONValue& value);
};

}  // namespace platform
