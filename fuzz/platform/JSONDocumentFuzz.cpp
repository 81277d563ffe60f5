// What is read is what the library's own parser reads, without what goes beyond the bounds. It has
// a printed form and comes back the same from its own text.

#include <algorithm>
#include <string>
#include <string_view>

#include "fuzz/Require.h"
#include "platform/base/Data.h"
#include "platform/store/JSONDocument.h"

namespace {

using platform::JSONFault;
using platform::JSONValue;
using quillet::fuzz::require;

/// Takes what is nested too deep out of `value`, inside `depth` others; false when it has to go
/// itself.
bool prune(JSONValue& value, int depth) {
  if (!value.is_structured()) {
    return true;
  }
  if (depth == platform::kMaxJSONDepth) {
    return false;
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

void checkAgainstLibrary(std::string_view text) {
  const auto document = platform::parseJSON(text);
  auto whole = JSONValue::parse(text, nullptr, /*allow_exceptions=*/false);
  if (!whole.is_discarded()) {
    const bool hasValue = prune(whole, 0);
    require(hasValue ? document && document->value == whole
                     : !document && document.error() == JSONFault::kTooDeep);
  } else if (document) {
    require(!document->leftOut.empty());  // a number that ends the library's parser
  }
}

void checkValue(const JSONValue& value) {
  const auto* const text = value.get_ptr<const std::string*>();
  const bool isEmptyText = text != nullptr && text->empty();
  require(platform::description(value).empty() == isEmptyText);
  // Numbers may be longer than they were: 1e5 is written as 100000.0.
  const auto written = value.dump();
  const auto again = platform::parseJSON(written);
  require(again ? again->value == value && again->leftOut.empty()
                : written.size() > platform::kMaxJSONSize);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = platform::textOf({data, size});
  if (size > platform::kMaxJSONSize || text.find('\0') != std::string_view::npos) {
    require(!platform::parseJSON(text));
    return 0;
  }
  checkAgainstLibrary(text);
  if (const auto document = platform::parseJSON(text)) {
    checkValue(document->value);
  }
  return 0;
}
