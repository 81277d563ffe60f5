#include "platform/store/UserDefaults.h"

#include <cmath>
#include <limits>
#include <map>
#include <memory>

#include "platform/base/Clock.h"
#include "platform/log/NSLog.h"
#include "platform/store/JSONDocument.h"

namespace platform {

namespace {

// A file name has 255 bytes at most (NAME_MAX); the rest is for what the name of a temporary file
// adds.
constexpr std::size_t kMaxNameLength = 200;

bool canNameFile(std::string_view name) {
  return !name.empty() && name.size() <= kMaxNameLength && name.front() != '.' &&
         name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

// Why a JSON text is not taken whole, if so.
std::optional<std::string> lossOf(const tl::expected<JSONDocument, JSONFault>& document) {
  if (!document) {
    return textOf(document.error());
  }
  if (document->leftOut.empty()) {
    return std::nullopt;
  }
  const auto& first = document->leftOut.front();
  return first.member + ": " + textOf(first.fault);
}

// Whether any further change of a file in this state is sure to show in its times.
bool isPastTimeStep(const FileState& state) {
  const auto now = static_cast<std::uint64_t>(Clock::system().microsecondsSince1970()) * 1000;
  return now - state.changed + FileState::kTimeStep > 2 * FileState::kTimeStep;
}

std::int64_t integerFrom(double number) {
  constexpr double kBeyond = 9223372036854775808.0;  // 2 to the power of 63
  if (std::isnan(number)) {
    return 0;
  }
  if (number >= kBeyond) {
    return std::numeric_limits<std::int64_t>::max();
  }
  return number < -kBeyond ? std::numeric_limits<std::int64_t>::min()
                           : static_cast<std::int64_t>(number);
}

}  // namespace

struct UserDefaults::Suites {
  std::filesystem::path directory;
  bool areWatched = false;
  std::map<std::string, std::unique_ptr<UserDefaults>, std::less<>> byName;
};

UserDefaults::Suites& UserDefaults::suites() {
  static Suites suites;
  return suites;
}

void UserDefaults::setDirectory(const std::filesystem::path& directory) {
  suites().directory = directory;
  for (const auto& [name, suite] : suites().byName) {
    suite->moveTo(fileOf(directory, name));
  }
}

void UserDefaults::watchChanges(bool doesWatch) { suites().areWatched = doesWatch; }

std::filesystem::path UserDefaults::fileOf(const std::filesystem::path& directory,
                                           std::string_view name) {
  return directory / (std::string(name) + ".json");
}

UserDefaults* UserDefaults::suite(std::string_view name) {
  auto& [directory, areWatched, byName] = suites();
  if (directory.empty() || !canNameFile(name)) {
    return nullptr;
  }
  auto found = byName.find(name);
  if (found == byName.end()) {
    found = byName.emplace(name, std::unique_ptr<UserDefaults>(new UserDefaults)).first;
    found->second->moveTo(fileOf(directory, name));
  }
  found->second->refreshUnlessUnchanged();
  return found->second->isUsable_ ? found->second.get() : nullptr;
}

void UserDefaults::moveTo(std::filesystem::path file) {
  file_ = std::move(file);
  watch_.forget();
  becomeEmpty();
}

void UserDefaults::refreshUnlessUnchanged() {
  if (watch_.isUnchanged()) {
    return;
  }
  if (suites().areWatched) {
    watch_.begin(file_);
  }
  refresh();
}

void UserDefaults::refresh() {
  const auto found = regularFileState(file_);
  if (found) {
    if (!isSettled_ || state_ != *found) {
      read(*found);
    }
  } else if (found.error() != std::errc::no_such_file_or_directory) {
    becomeUnusable(found.error().message());
  } else if (state_ || !isUsable_) {
    becomeEmpty();
  }
}

void UserDefaults::read(const FileState& found) {
  auto content = readRegularFile(file_, kMaxJSONSize);
  if (content) {
    take(parseJSON(content->text));
  } else {
    becomeUnusable(content.error().message());
  }
  state_ = content ? content->state : found;
  isSettled_ = isPastTimeStep(*state_);
}

void UserDefaults::take(tl::expected<JSONDocument, JSONFault> document) {
  const auto loss = lossOf(document);
  if (!document || !document->value.is_object()) {
    becomeUnusable(loss.value_or("it holds no JSON object"));
    return;
  }
  values_ = std::move(document->value.get_ref<JSONObject&>());
  isUsable_ = true;
  loss_ = loss;
}

void UserDefaults::becomeEmpty() {
  values_.clear();
  loss_.reset();
  state_.reset();
  isUsable_ = true;
  isSettled_ = true;
}

void UserDefaults::becomeUnusable(std::string_view reason) {
  if (isUsable_) {
    NSLog("user defaults ", file_.native(), " cannot be used: ", reason);
  }
  becomeEmpty();
  isUsable_ = false;
}

void UserDefaults::setObject(JSONValue value, std::string_view key) {
  refresh();
  if (value.is_null()) {
    values_.erase(std::string(key));
  } else {
    values_.insert_or_assign(std::string(key), std::move(value));
  }
  write();
}

void UserDefaults::write() {
  if (const auto state = replaced()) {
    state_ = *state;
    isSettled_ = isPastTimeStep(*state);
  } else {
    NSLog("user defaults ", file_.native(), " not written: ", state.error());
    isSettled_ = true;  // else the value would soon be replaced by what the file holds
  }
}

tl::expected<FileState, Error> UserDefaults::replaced() const {
  if (!isUsable_) {
    return tl::make_unexpected(Error("the file that is there cannot be read"));
  }
  if (loss_) {
    return tl::make_unexpected(Error("the file that is there would lose " + *loss_));
  }
  const std::string text =
      JSONValue(values_).dump(2, ' ', false, JSONValue::error_handler_t::replace) + '\n';
  if (lossOf(parseJSON(text))) {
    return tl::make_unexpected(Error("too large or too deep to be read again"));
  }
  return replaceFile(file_, text).map_error([](std::error_code error) {
    return Error(error.message());
  });
}

const JSONValue* UserDefaults::find(std::string_view key) const {
  const auto found = values_.find(key);
  return found == values_.end() ? nullptr : &found->second;
}

std::optional<JSONObject> UserDefaults::dictionaryForKey(std::string_view key) const {
  const JSONValue* value = find(key);
  return value != nullptr && value->is_object() ? std::optional(value->get_ref<const JSONObject&>())
                                                : std::nullopt;
}

std::optional<std::string> UserDefaults::stringForKey(std::string_view key) const {
  const JSONValue* value = find(key);
  return value != nullptr && value->is_string() ? std::optional(value->get<std::string>())
                                                : std::nullopt;
}

std::optional<bool> UserDefaults::boolForKey(std::string_view key) const {
  const JSONValue* value = find(key);
  return value != nullptr && value->is_boolean() ? std::optional(value->get<bool>()) : std::nullopt;
}

std::int64_t UserDefaults::integerForKey(std::string_view key) const {
  const JSONValue* value = find(key);
  if (value == nullptr || !value->is_number()) {
    return 0;
  }
  if (value->is_number_float()) {
    return integerFrom(value->get<double>());
  }
  if (value->is_number_unsigned() &&
      value->get<std::uint64_t>() > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) {
    return std::numeric_limits<std::int64_t>::max();
  }
  return value->get<std::int64_t>();
}

}  // namespace platform
