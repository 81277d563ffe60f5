#pragma once

#include <map>
#include <string>
#include <string_view>

namespace quillet {

/// The settings as the whole provider reads them: a name to a text.
using ConfigurationMap = std::map<std::string, std::string>;

/// The text of a setting, or nullptr.
inline const std::string* settingIn(const ConfigurationMap& conf, std::string_view key) {
  const auto found = conf.find(std::string(key));
  return found == conf.end() ? nullptr : &found->second;
}

}  // namespace quillet
