#pragma once

#include <exception>
#include <utility>

namespace platform {

namespace detail {

void logThrown(const char* what) noexcept;

}  // namespace detail

/// Runs a handler that belongs to somebody else. What it throws is one log line, and the caller
/// goes on.
template <class Handler>
void runGuarded(Handler&& handler) noexcept {
  try {
    std::forward<Handler>(handler)();
  } catch (const std::exception& error) {
    detail::logThrown(error.what());
  } catch (...) {
    detail::logThrown("something that is no std::exception");
  }
}

}  // namespace platform
