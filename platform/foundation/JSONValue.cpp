#include "platform/foundation/JSONValue.h"

#include "platform/foundation/Utf8.h"

namespace platform {

namespace {

/// Follows one string of a JSON text: told each byte in turn, says whether it lies outside of
/// strings.
class StringTracker {
 public:
  bool isOutside(char c) {
    if (!inString_) {
      inString_ = c == '"';
      return !inString_;
    }
    if (escaped_) {
      escaped_ = false;
    } else if (c == '\\') {
      escaped_ = true;
    } else if (c == '"') {
      inString_ = false;
    }
    return false;
  }

 private:
  bool inString_ = false;
  bool escaped_ = false;
};

// Exact up to the first error of a text, and no parser goes beyond that.
bool isWithinDepth(std::string_view text) {
  StringTracker strings;
  int depth = 0;
  for (const char c : text) {
    if (!strings.isOutside(c)) {
      continue;
    }
    if (c == '[' || c == '{') {
      if (++depth > kMaxJSONDepth) {
        return false;
      }
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
  return true;
}

// The library takes a NUL for the end of the text, whatever follows.
bool holdsNul(std::string_view text) { return text.find('\0') != std::string_view::npos; }

}  // namespace

std::optional<JSONValue> parseJSON(std::string_view text) {
  if (text.size() > kMaxJSONSize || holdsNul(text) || !isValidUtf8(text) || !isWithinDepth(text)) {
    return std::nullopt;
  }
  auto value = JSONValue::parse(text.begin(), text.end(), nullptr, /*allow_exceptions=*/false);
  if (value.is_discarded()) {
    return std::nullopt;
  }
  return value;
}

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
