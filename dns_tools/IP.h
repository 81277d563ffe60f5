#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/Data.h"

namespace DnsToolsSocket {

/// What an address type offers: the value of a `HostRecord`.
///
/// - `networkBytes(bytes)` makes an address of exactly the family's number of octets, network
/// order.
/// - `fromPresentation(text)` makes one of what `inet_pton` accepts for the family.
/// - `bytes()` are the octets, borrowed from the address.
/// - `presentation()` is the address as text, `debugDescription()` the same.
/// - `kTypeCode` is the type of the record, `kHostRecordName` its name in printed form.
template <class T>
concept IP = requires(const T& address, std::string_view text, platform::DataView octets) {
  { T::networkBytes(octets) } -> std::same_as<std::optional<T>>;
  { T::fromPresentation(text) } -> std::same_as<std::optional<T>>;
  { address.bytes() } -> std::same_as<platform::DataView>;
  { address.presentation() } -> std::same_as<std::string>;
  { address.debugDescription() } -> std::same_as<std::string>;
  { T::kTypeCode } -> std::convertible_to<std::uint16_t>;
  { T::kHostRecordName } -> std::convertible_to<std::string_view>;
};

}  // namespace DnsToolsSocket
