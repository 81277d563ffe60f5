#pragma once

#include <cstdint>
#include <string>
#include <tl/expected.hpp>
#include <vector>

#include "dns_tools/DecodeError.h"
#include "dns_tools/EncodeError.h"
#include "dns_tools/MessageType.h"
#include "dns_tools/Question.h"
#include "dns_tools/RecordValue.h"
#include "platform/base/Data.h"
#include "platform/base/SmallList.h"

namespace DnsToolsSocket {

/// A DNS message as a value (RFC 1035 section 4). Names are texts, labels joined by "."; decoded
/// ones end in a ".". Built member by member, all twelve in this order. All operations work on
/// their arguments only and may run on any thread.
struct Message {
  /// Octets past the last record are ignored. Time and memory are bounded by the number of bytes:
  /// the message holds at most 120 octets for each of them, wherever its names point.
  static tl::expected<Message, DecodeError> deserialize(platform::DataView bytes);
  /// The message after a length of two octets (RFC 1035 section 4.2.2). Fails with
  /// `invalidMessageSize` when the length or some of what it announces is missing.
  static tl::expected<Message, DecodeError> deserializeTCP(platform::DataView bytes);

  /// Names are compressed. A name that could only be pointed to beyond the reach of a pointer is
  /// written out.
  [[nodiscard]] tl::expected<platform::Data, EncodeError> serialize() const;
  /// With a length of two octets before it.
  [[nodiscard]] tl::expected<platform::Data, EncodeError> serializeTCP() const;

  /// One line.
  [[nodiscard]] std::string debugDescription() const;
  /// Appends that line.
  void describe(std::string& out) const;

  std::uint16_t id = 0;
  MessageType type = MessageType::query;
  /// 0 to 15.
  std::uint8_t operationCode = 0;
  bool authoritativeAnswer = false;
  bool truncation = false;
  bool recursionDesired = false;
  bool recursionAvailable = false;
  /// 0 to 15.
  std::uint8_t returnCode = 0;
  platform::SmallList<Question> questions;
  std::vector<RecordValue> answers;
  std::vector<RecordValue> authorities;
  std::vector<RecordValue> additional;
};

}  // namespace DnsToolsSocket
