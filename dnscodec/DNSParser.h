#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "dnscodec/DNSMessage.h"
#include "platform/base/Data.h"

namespace quillet {

/// Puts EDNS options into query datagrams: replaces the whole additional section of each by one OPT
/// record that carries them (RFC 6891 section 6.1). Keeps no state; any thread.
///
/// A list of results has one entry for each datagram, in order. Of a query that cannot be decoded,
/// or that no datagram carries once its names are written in full, the question octets are kept as
/// they came, before the OPT record. Where even they cannot be told apart the datagram comes back
/// as it is, so that the server may say what it thinks of it. Each is one log line.
class DNSParser {
 public:
  using Data = platform::Data;
  /// Option codes in decimal ("65001") to the options' texts.
  using Flags = std::map<std::string, std::string>;

  /// Builds the options once and injects them into each datagram; every step is logged.
  static std::vector<Data> injectFlagsToDatagrams(const std::vector<Data>& datagrams,
                                                  const std::optional<Flags>& flags);
  static std::vector<Data> injectFlagsToDatagrams(const std::vector<Data>& datagrams,
                                                  const std::vector<std::uint16_t>& codes,
                                                  const std::vector<std::string>& values);

  /// `dataForInjection` are finished options, see `buildEdnsDataWithCodes`.
  static Data injectFlagsTo(const Data& datagram, Data dataForInjection);
  static Data injectFlagsTo(const Data& datagram, const std::vector<std::uint16_t>& codes,
                            const std::vector<std::string>& values);

  /// One option: code, length, text (RFC 6891 section 6.1.2). A text of more than 65,535 octets has
  /// no such form; it is left out, which is one log line.
  static Data buildEdnsDataWithCode(std::uint16_t code, std::string_view value);
  /// The options one after another, each code with the value of the same index; codes beyond the
  /// last value are left out.
  static Data buildEdnsDataWithCodes(const std::vector<std::uint16_t>& codes,
                                     const std::vector<std::string>& values);
  /// The options of a dictionary in the order of its keys, none for none. A key counts as the
  /// decimal integer that it begins with, 0 without one, cut to 16 bits.
  static Data buildEdnsDataFromDict(const std::optional<Flags>& flags);

  /// Logs the questions. A name that is a URL is replaced by the URL's host; one that only contains
  /// "http" and has no host stays as it is.
  static DNSMessage& checkDnsMessage(DNSMessage& message);

  /// Two lower-case digits for each octet; nothing for nothing.
  static std::optional<std::string> hexStringForData(std::optional<platform::DataView> data);
};

}  // namespace quillet
