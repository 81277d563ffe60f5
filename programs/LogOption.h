#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "platform/log/LogMode.h"

namespace quillet {

/// Adds `--log full|brief`, which sets the log's mode.
inline void addLogOption(CLI::App& app, const std::string& help) {
  const auto check = [](const std::string& text) {
    return platform::logModeNamed(text) ? "" : text + " is neither full nor brief";
  };
  const auto take = [](const std::string& text) {
    platform::setLogMode(platform::logModeNamed(text).value());
  };
  app.add_option_function<std::string>("--log", take, help)
      ->type_name("full|brief")
      ->check(check)
      ->default_str(std::string(platform::nameOf(platform::logMode())));
}

}  // namespace quillet
