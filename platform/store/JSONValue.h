#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "platform/base/Description.h"

namespace platform {

/// Any JSON value, printed through `describe` as the platform prints such values: texts inside
/// others in quotes, `["key": value]` for an object, `<null>` for null.
using JSONValue = nlohmann::json;
/// A name to any value, in the order of the names.
using JSONObject = JSONValue::object_t;

template <>
struct Describer<JSONValue> {
  static void describe(std::string& out, const JSONValue& value);
  static void debugDescribe(std::string& out, const JSONValue& value);
};

}  // namespace platform
