#pragma once

#include <optional>

#include "dns_tools/Message.h"
#include "platform/base/Data.h"

namespace quillet {

/// What the demo service says to a query: one record made from the name for A, AAAA and HTTPS,
/// REFUSED for other types and classes, NOTIMP for other operations, FORMERR unless there is
/// exactly one question. The question comes back as it was asked. A message that is no query gets
/// no answer.
std::optional<DnsToolsSocket::Message> answerTo(const DnsToolsSocket::Message& query);

/// FORMERR without a question, for a datagram that cannot be decoded; nothing when it has no whole
/// header or claims to be an answer.
std::optional<DnsToolsSocket::Message> answerToUndecodable(platform::DataView datagram);

}  // namespace quillet
