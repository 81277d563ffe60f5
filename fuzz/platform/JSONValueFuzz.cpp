// What parses is within the bounds, has a printed form, and comes back the same from its own text.

#include <algorithm>
#include <string>
#include <string_view>

#include "fuzz/Require.h"
#include "platform/foundation/JSONValue.h"

namespace {

using quillet::fuzz::require;

int depthOf(const platform::JSONValue& value) {
  if (!value.is_structured()) {
    return 0;
  }
  int deepest = 0;
  for (const auto& element : value) {
    deepest = std::max(deepest, depthOf(element));
  }
  return deepest + 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto value = platform::parseJSON({reinterpret_cast<const char*>(data), size});
  if (!value) {
    return 0;
  }
  const auto* const text = value->get_ptr<const std::string*>();
  const bool isEmptyText = text != nullptr && text->empty();
  require(size <= platform::kMaxJSONSize && depthOf(*value) <= platform::kMaxJSONDepth);
  require(platform::description(*value).empty() == isEmptyText);
  // Numbers may be longer than they were: 1e5 is written as 100000.0.
  const auto written = value->dump();
  const auto again = platform::parseJSON(written);
  require(again ? *again == *value : written.size() > platform::kMaxJSONSize);
  return 0;
}
