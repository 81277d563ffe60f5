#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/store/JSONDocument.h"
#include "platform/store/JSONNumbers.h"

namespace platform {

/// Builds a `JSONDocument` from what the library's parser tells it, piece by piece.
///
/// `levels_` are the arrays and objects that are open and kept, one within the other; `depth_`
/// counts all that are open. When a value is to be left out, the innermost object becomes the last
/// level; what follows is passed over while more is open than kept.
class JSONDocumentReader final : public nlohmann::json_sax<JSONValue> {
 public:
  /// `leftOut`, borrowed, are the numbers that are left out.
  explicit JSONDocumentReader(const std::vector<JSONNumber>& leftOut) : numbers_(leftOut) {}

  /// To be called once, when the parser came to the end of a valid text.
  tl::expected<JSONDocument, JSONFault> takeDocument();

  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override { return addNumber(value); }
  bool number_unsigned(number_unsigned_t value) override { return addNumber(value); }
  bool number_float(number_float_t value, const string_t& /*text*/) override {
    return addNumber(value);
  }
  bool string(string_t& value) override { return add(std::move(value)); }
  bool binary(binary_t& /*value*/) override { return false; }  // JSON has none
  bool start_object(std::size_t /*size*/) override { return open(JSONValue::object()); }
  bool key(string_t& name) override;
  bool end_object() override { return close(); }
  bool start_array(std::size_t /*size*/) override { return open(JSONValue::array()); }
  bool end_array() override { return close(); }
  bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                   const nlohmann::json::exception& /*error*/) override {
    return false;
  }

 private:
  struct Level {
    JSONValue value;
    std::string key;  // of the member that comes next, in an object
  };

  [[nodiscard]] bool isPassingOver() const { return depth_ > levels_.size() || rootFault_; }
  bool open(JSONValue value);
  bool close();
  bool add(JSONValue value);
  bool addNumber(JSONValue value);
  void leaveOut(JSONFault fault);
  void retire(JSONValue value);

  const std::vector<JSONNumber>& numbers_;
  std::size_t numbersLeftOut_ = 0;
  std::size_t numberCount_ = 0;
  std::size_t depth_ = 0;
  std::vector<Level> levels_;
  std::optional<JSONFault> rootFault_;
  JSONDocument document_{nullptr};
};

}  // namespace platform
