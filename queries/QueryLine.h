#pragma once

#include <string>

#include "queries/QueryOutcome.h"

namespace quillet {

/// The log's line about a query that is over:
///
///     query www.example.com A app=firefox rule=5 server=192.0.2.53:81 rcode=NOERROR ms=12.3
///
/// `-` stands for what is not known, `none` for the RCODE of a query without an answer. In name,
/// application and server every octet that is no printable ASCII character, the blank, `=` and the
/// backslash stand as `\xNN`: blanks and `=` are the line's own, whoever chose the text.
std::string queryLine(const QueryOutcome& outcome);

}  // namespace quillet
