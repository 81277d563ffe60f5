#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <utility>
#include <vector>

#include "platform/store/JSONValue.h"

namespace platform {

/// The greatest size of a JSON text, in bytes, and the greatest depth of its arrays and objects:
/// what memory and recursion a text can cost stays bounded.
inline constexpr std::size_t kMaxJSONSize = 1 << 20;
inline constexpr int kMaxJSONDepth = 64;

/// Why a text, or a value in it, was not taken.
enum class JSONFault { kNotJSON, kTooLarge, kTooDeep, kNumberTooLarge };

/// "not valid JSON", "nested deeper than 64" and so on.
std::string textOf(JSONFault fault);

/// What became of one JSON text. A value that is nested too deep, or a number that no double can
/// hold, is left out together with the innermost member of an object that it stands in, so that no
/// array silently lacks an element; all beside that member is there. A name that stands twice in an
/// object has its last value, and none when that one was left out.
struct JSONDocument {
  struct LeftOut {
    const JSONObject* object;  // that holds the member; a part of `value` or of `retired`
    std::string member;
    JSONFault fault;
  };

  JSONValue value;
  std::vector<LeftOut> leftOut;
  /// Names that stand twice in `value`, where that is an object; not those in the objects inside.
  std::set<std::string> repeated;
  /// What once stood in `value`: kept, so that no object has the address of one that is gone.
  std::vector<JSONValue> retired;

  explicit JSONDocument(JSONValue whole) : value(std::move(whole)) {}
  // A copy's objects would have other addresses.
  JSONDocument(const JSONDocument&) = delete;
  JSONDocument& operator=(const JSONDocument&) = delete;
  JSONDocument(JSONDocument&&) = default;
  JSONDocument& operator=(JSONDocument&&) = default;
  ~JSONDocument() = default;

  /// Why `object`, a part of `value` where it was read, lacks the member; absent when it never had
  /// one.
  [[nodiscard]] std::optional<JSONFault> faultOf(const JSONObject& object,
                                                 std::string_view member) const;
};

/// `text` read as one JSON value (RFC 8259). The faults of a value are those of the whole text when
/// no object holds it; only then is it known that the text is valid otherwise. `largest` is for a
/// text of which more is expected.
tl::expected<JSONDocument, JSONFault> parseJSON(std::string_view text,
                                                std::size_t largest = kMaxJSONSize);

}  // namespace platform
