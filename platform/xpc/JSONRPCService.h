#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <variant>

#include "platform/store/JSONValue.h"
#include "platform/xpc/JSONRPC.h"

namespace platform {

/// A client that is told of what happens, beside the answers to its calls.
class JSONRPCSubscriber {
 public:
  JSONRPCSubscriber() = default;
  JSONRPCSubscriber(const JSONRPCSubscriber&) = delete;
  JSONRPCSubscriber& operator=(const JSONRPCSubscriber&) = delete;
  virtual ~JSONRPCSubscriber() = default;

  /// Sends `count` notifications, each a line. A client that does not read loses them all; once it
  /// reads again it is told how many, by the notification `lost {"lost": N}`.
  virtual void notify(std::string_view lines, std::uint64_t count) = 0;
};

/// The next piece of a text, of whole characters; absent at its end. Made while the client reads.
using JSONRPCTextSource = std::function<std::optional<std::string>()>;

/// What a call gives: a value, or a text too long to be made at once.
using JSONRPCResult = std::variant<JSONValue, JSONRPCTextSource>;

/// The methods that clients call. Inside the event loop only.
class JSONRPCService {
 public:
  JSONRPCService() = default;
  JSONRPCService(const JSONRPCService&) = delete;
  JSONRPCService& operator=(const JSONRPCService&) = delete;

  /// `params` are by name, none where the call has none.
  virtual tl::expected<JSONRPCResult, JSONRPCFault> call(
      const std::string& method, const JSONObject& params,
      const std::shared_ptr<JSONRPCSubscriber>& client) = 0;

 protected:
  ~JSONRPCService() = default;
};

}  // namespace platform
