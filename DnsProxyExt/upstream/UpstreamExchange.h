#pragma once

#include <functional>

#include "DnsProxyExt/intake/Batch.h"
#include "DnsProxyExt/routing/Utils.h"

namespace quillet {

using AnswerHandler = std::function<void(Answer)>;

/// Sends a complete batch to a server and hands on each answer. The handler goes when no further
/// answer can come.
using UpstreamExchange =
    std::function<void(Batch batch, const Utils::DNSHost& server, AnswerHandler handler)>;

/// The one over UDP: one connected socket for the batch.
void exchangeOverUDP(Batch batch, const Utils::DNSHost& server, AnswerHandler handler);

}  // namespace quillet
