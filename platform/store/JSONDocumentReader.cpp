#include "platform/store/JSONDocumentReader.h"

#include <utility>

namespace platform {

tl::expected<JSONDocument, JSONFault> JSONDocumentReader::takeDocument() {
  if (rootFault_) {
    return tl::unexpected(*rootFault_);
  }
  return std::move(document_);
}

bool JSONDocumentReader::key(string_t& name) {
  if (!isPassingOver()) {
    levels_.back().key = std::move(name);
  }
  return true;
}

bool JSONDocumentReader::open(JSONValue value) {
  ++depth_;
  if (depth_ - 1 > levels_.size() || rootFault_) {
    return true;
  }
  if (depth_ > kMaxJSONDepth) {
    leaveOut(JSONFault::kTooDeep);
  } else {
    levels_.push_back({std::move(value), {}});
  }
  return true;
}

bool JSONDocumentReader::close() {
  const bool isKept = !isPassingOver();
  --depth_;
  if (!isKept) {
    return true;
  }
  auto value = std::move(levels_.back().value);
  levels_.pop_back();
  return add(std::move(value));
}

bool JSONDocumentReader::add(JSONValue value) {
  if (isPassingOver()) {
    return true;
  }
  if (levels_.empty()) {
    document_.value = std::move(value);
    return true;
  }
  auto& [parent, key] = levels_.back();
  if (parent.is_array()) {
    parent.push_back(std::move(value));
  } else {
    if (levels_.size() == 1 && parent.contains(key)) {
      document_.repeated.insert(key);
    }
    retire(std::exchange(parent[key], std::move(value)));
  }
  return true;
}

bool JSONDocumentReader::addNumber(JSONValue value) {
  const bool isLeftOut =
      numbersLeftOut_ < numbers_.size() && numbers_[numbersLeftOut_].index == numberCount_;
  ++numberCount_;
  if (!isLeftOut) {
    return add(std::move(value));
  }
  ++numbersLeftOut_;
  if (!isPassingOver()) {
    leaveOut(JSONFault::kNumberTooLarge);
  }
  return true;
}

void JSONDocumentReader::leaveOut(JSONFault fault) {
  while (!levels_.empty() && levels_.back().value.is_array()) {
    retire(std::move(levels_.back().value));
    levels_.pop_back();
  }
  if (levels_.empty()) {
    rootFault_ = fault;
    return;
  }
  auto& [value, key] = levels_.back();
  auto& object = value.get_ref<JSONObject&>();
  if (const auto former = object.find(key); former != object.end()) {
    retire(std::move(former->second));
    object.erase(former);
  }
  document_.leftOut.push_back({&object, std::move(key), fault});
}

void JSONDocumentReader::retire(JSONValue value) {
  if (value.is_structured()) {
    document_.retired.push_back(std::move(value));
  }
}

}  // namespace platform
