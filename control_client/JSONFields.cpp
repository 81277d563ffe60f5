#include "control_client/JSONFields.h"

namespace quilletctl {

using platform::JSONValue;

const JSONValue& memberOf(const JSONValue& object, const char* name) {
  static const JSONValue kNone;
  const auto member = object.is_object() ? object.find(name) : object.end();
  return member == object.end() ? kNone : *member;
}

std::optional<std::string> textOf(const JSONValue& object, const char* name) {
  const auto& value = memberOf(object, name);
  return value.is_string() ? std::optional(value.get<std::string>()) : std::nullopt;
}

std::optional<bool> flagOf(const JSONValue& object, const char* name) {
  const auto& value = memberOf(object, name);
  return value.is_boolean() ? std::optional(value.get<bool>()) : std::nullopt;
}

std::optional<std::uint64_t> countOf(const JSONValue& object, const char* name) {
  const auto& value = memberOf(object, name);
  return value.is_number_unsigned() ? std::optional(value.get<std::uint64_t>()) : std::nullopt;
}

std::optional<double> numberOf(const JSONValue& object, const char* name) {
  const auto& value = memberOf(object, name);
  const double number = value.is_number() ? value.get<double>() : -1;
  return number >= 0 ? std::optional(number) : std::nullopt;
}

}  // namespace quilletctl
