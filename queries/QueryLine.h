#pragma once

#include <string>

#include "queries/QueryOutcome.h"

namespace quillet {

/// A query that is over, printed as its line of the log:
///
///     query www.example.com A app=firefox rule=5 server=192.0.2.53:81 rcode=NOERROR ms=12.3
///
/// `-` stands for what is not known, `none` for the RCODE of a query without an answer. In name,
/// application and server every octet but the printable ones of ASCII stands as `\xNN`, and so do
/// the blank, `=` and the backslash: the line's own are no part of a text that somebody chose.
struct QueryLine {
  void describe(std::string& out) const;

  const QueryOutcome& outcome;
};

}  // namespace quillet
