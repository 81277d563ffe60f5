#include "platform/store/JSONValue.h"

namespace platform {

void Describer<JSONValue>::describe(std::string& out, const JSONValue& value) {
  if (const auto* text = value.get_ptr<const JSONValue::string_t*>()) {
    out.append(*text);
  } else {
    debugDescribe(out, value);
  }
}

void Describer<JSONValue>::debugDescribe(std::string& out, const JSONValue& value) {
  switch (value.type()) {
    case JSONValue::value_t::string:
      return platform::debugDescribe(out, value.get_ref<const JSONValue::string_t&>());
    case JSONValue::value_t::boolean:
      return platform::describe(out, value.get<bool>());
    case JSONValue::value_t::number_integer:
      return platform::describe(out, value.get<JSONValue::number_integer_t>());
    case JSONValue::value_t::number_unsigned:
      return platform::describe(out, value.get<JSONValue::number_unsigned_t>());
    case JSONValue::value_t::number_float:
      return platform::describe(out, value.get<JSONValue::number_float_t>());
    case JSONValue::value_t::array:
      return platform::describe(out, value.get_ref<const JSONValue::array_t&>());
    case JSONValue::value_t::object:
      return platform::describe(out, value.get_ref<const JSONValue::object_t&>());
    case JSONValue::value_t::binary:
    case JSONValue::value_t::discarded:
    case JSONValue::value_t::null:
      out.append("<null>");  // JSON itself has neither of the first two
  }
}

}  // namespace platform
