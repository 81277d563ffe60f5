// What is read whole is what the library's own parser reads. It has a printed form and comes back
// the same from its own text.

#include <string>

#include "fuzz/Target.h"
#include "platform/store/JSONDocument.h"

namespace quillet::fuzz {

using platform::JSONFault;
using platform::JSONValue;

void run(platform::DataView input) {
  const auto text = platform::textOf(input);
  const auto document = platform::parseJSON(text);
  if (text.size() > platform::kMaxJSONSize || text.find('\0') != std::string_view::npos) {
    return require(!document);
  }
  const auto whole = JSONValue::parse(text, nullptr, /*allow_exceptions=*/false);
  if (!document) {
    return require(whole.is_discarded() || document.error() == JSONFault::kTooDeep);
  }
  const auto& value = document->value;
  require(!document->leftOut.empty() || value == whole);
  require(platform::description(value).empty() == (value == platform::JSONValue("")));
  // Numbers may be longer than they were: 1e5 is written as 100000.0.
  const auto written = value.dump();
  const auto again = platform::parseJSON(written);
  require(again ? again->value == value && again->leftOut.empty()
                : written.size() > platform::kMaxJSONSize);
}

}  // namespace quillet::fuzz
