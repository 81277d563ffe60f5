#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

#include "platform/store/JSONValue.h"

namespace platform {

/// The codes of JSON-RPC 2.0, section 5.1, the last two out of the range that it leaves to servers.
enum class JSONRPCError {
  kParseError = -32700,
  kInvalidRequest = -32600,
  kMethodNotFound = -32601,
  kInvalidParams = -32602,
  kInternalError = -32603,
  /// This client is not served.
  kNotAllowed = -32001,
  /// The method was called and has failed.
  kMethodFailed = -32002,
};

/// Why a call has no result. Without a message the usual one of the code is sent.
struct JSONRPCFault {
  JSONRPCError error;
  std::string message{};
};

/// One call of a method.
struct JSONRPCRequest {
  /// Absent for a notification: nothing is answered, errors included.
  std::optional<JSONValue> id;
  std::string method;
  std::optional<JSONValue> params;
};

/// Why a line is no request, and the id that the answer carries: null when the line has none.
struct JSONRPCRejection {
  JSONValue id;
  JSONRPCError error;
};

/// The request in one line: a JSON object, `"jsonrpc": "2.0"`, the id a text, a number or null.
/// Batches are not read, nor is a line of which something would be left out (see `JSONDocument`): a
/// method gets its parameters whole or is not called.
tl::expected<JSONRPCRequest, JSONRPCRejection> readJSONRPCRequest(std::string_view line);

/// The answers, each a line with its line feed.
std::string jsonRPCResultLine(const JSONValue& id, const JSONValue& result);
std::string jsonRPCErrorLine(const JSONValue& id, const JSONRPCFault& fault);

/// A result that is a text, in parts: the head, any number of parts, each of whole characters, and
/// the tail.
std::string jsonRPCTextHead(const JSONValue& id);
std::string jsonRPCTextPart(const std::string& text);
inline constexpr std::string_view kJSONRPCTextTail = "\"}\n";

/// A call that nobody answers, a line with its line feed.
std::string jsonRPCNotificationLine(const std::string& method, const JSONValue& params);

}  // namespace platform
