// What is read is what the library's own parser reads, without what goes beyond the bounds. It has
// a printed form and comes back the same from its own text.

#include <algorithm>
#include <string>

#include "fuzz/Target.h"
#include "platform/store/JSONDocument.h"

namespace quillet::fuzz {

using platform::JSONFault;
using platform::JSONValue;

/// Takes what is nested too deep out of `value`, inside `depth` others; false when it has to go
/// itself.
bool prune(JSONValue& value, int depth) {
  if (!value.is_structured() || depth == platform::kMaxJSONDepth) {
    return !value.is_structured();
  }
  const auto keep = [depth](JSONValue& inner) { return prune(inner, depth + 1); };
  if (value.is_array()) {
    return std::all_of(value.begin(), value.end(), keep);
  }
  for (auto member = value.begin(); member != value.end();) {
    member = keep(*member) ? std::next(member) : value.erase(member);
  }
  return true;
}

void run(platform::DataView input) {
  const auto text = platform::textOf(input);
  const auto document = platform::parseJSON(text);
  if (text.size() > platform::kMaxJSONSize || text.find('\0') != std::string_view::npos) {
    return require(!document);
  }
  auto whole = JSONValue::parse(text, nullptr, /*allow_exceptions=*/false);
  if (!whole.is_discarded()) {
    require(prune(whole, 0) ? document && document->value == whole
                            : !document && document.error() == JSONFault::kTooDeep);
  }
  if (!document) {
    return;
  }
  const auto& value = document->value;
  require(!whole.is_discarded() || !document->leftOut.empty());  // a number that ends the library's
  require(platform::description(value).empty() == (value == platform::JSONValue("")));
  // Numbers may be longer than they were: 1e5 is written as 100000.0.
  const auto written = value.dump();
  const auto again = platform::parseJSON(written);
  require(again ? again->value == value && again->leftOut.empty()
                : written.size() > platform::kMaxJSONSize);
}

}  // namespace quillet::fuzz
