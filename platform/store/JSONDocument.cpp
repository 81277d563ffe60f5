#include "platform/store/JSONDocument.h"

#include <algorithm>

#include "platform/base/Utf8.h"
#include "platform/store/JSONDocumentReader.h"
#include "platform/store/JSONNumbers.h"

namespace platform {

namespace {

// The library takes a NUL for the end of the text, whatever follows.
bool holdsNul(std::string_view text) { return text.find('\0') != std::string_view::npos; }

}  // namespace

std::string textOf(JSONFault fault) {
  switch (fault) {
    case JSONFault::kNotJSON:
      return "not valid JSON";
    case JSONFault::kTooLarge:
      return "larger than " + std::to_string(kMaxJSONSize) + " bytes";
    case JSONFault::kTooDeep:
      return "nested deeper than " + std::to_string(kMaxJSONDepth);
    case JSONFault::kNumberTooLarge:
      return "a number too large";
  }
  return "";
}

std::optional<JSONFault> JSONDocument::faultOf(const JSONObject& object,
                                               std::string_view member) const {
  const auto found = std::find_if(leftOut.begin(), leftOut.end(), [&](const LeftOut& entry) {
    return entry.object == &object && entry.member == member;
  });
  return found == leftOut.end() ? std::nullopt : std::optional(found->fault);
}

tl::expected<JSONDocument, JSONFault> parseJSON(std::string_view text, std::size_t largest) {
  if (text.size() > largest) {
    return tl::unexpected(JSONFault::kTooLarge);
  }
  if (holdsNul(text) || !isValidUtf8(text)) {
    return tl::unexpected(JSONFault::kNotJSON);
  }
  const auto numbers = findNumbersBeyondDouble(text);
  JSONDocumentReader reader(numbers);
  const bool isJSON = numbers.empty() ? JSONValue::sax_parse(text, &reader)
                                      : JSONValue::sax_parse(withZeroFor(numbers, text), &reader);
  if (!isJSON) {
    return tl::unexpected(JSONFault::kNotJSON);
  }
  return reader.takeDocument();
}

}  // namespace platform
