#pragma once

#include <string>

#include "dns_tools/Message.h"

namespace quillet {

/// Appends the line, with its line feed, that shows a query: type and name of the first question,
/// and the EDNS options that came with it.
///
///     A example.com  65001=org42 65003=u1
///     AAAA example.com  no identity
///
/// Control characters are escaped, so that a query makes exactly one line and reaches no terminal
/// raw.
void appendQueryLine(std::string& out, const DnsToolsSocket::Message& query);

}  // namespace quillet
