#pragma once

#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <utility>

#include "control_client/ControlConnection.h"
#include "control_client/Failure.h"
#include "platform/store/JSONValue.h"

namespace quilletctl {

/// What the proxy tells unasked, once it was asked to `watch`.
struct Notification {
  std::string method;
  platform::JSONValue params;
};

/// Calls the methods of the control socket: JSON-RPC 2.0, one message a line.
class ControlClient {
 public:
  explicit ControlClient(ControlConnection connection) : connection_(std::move(connection)) {}

  /// The method's result. An error that the proxy answers is a failure with its message; one
  /// without an id too, as that is how it turns a client away.
  tl::expected<platform::JSONValue, Failure> call(const std::string& method,
                                                  platform::JSONValue params);

  /// The next notification; waits for it as long as the proxy lives.
  tl::expected<Notification, Failure> notification();
  /// The same without waiting; absent when there is none yet.
  tl::expected<std::optional<Notification>, Failure> notificationIfThere();

  /// See `ControlConnection`.
  [[nodiscard]] int descriptor() const { return connection_.descriptor(); }

 private:
  ControlConnection connection_;
};

}  // namespace quilletctl
