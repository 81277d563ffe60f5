#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "DnsProxyExt/relay/RelayLog.h"
#include "dns_tools/Message.h"
#include "platform/base/Data.h"

namespace quillet {

/// Decodes queries and answers and logs what they hold. Absent for what is no message.
class Decoding {
 public:
  using Decoded = std::optional<DnsToolsSocket::Message>;

  explicit Decoding(RelayLog relayLog) : relayLog_(std::move(relayLog)) {}

  static Decoded request(platform::DataView data, std::int64_t flowHash);
  /// Tells the relay service's log of it too.
  [[nodiscard]] Decoded response(platform::DataView data, std::int64_t flowHash) const;
  /// `label` says in the log what it is.
  static Decoded message(platform::DataView data, std::string_view label);

  /// The name of the first question; absent without a message or a question.
  static std::optional<std::string> questionName(const Decoded& message);

 private:
  const RelayLog relayLog_;
};

}  // namespace quillet
