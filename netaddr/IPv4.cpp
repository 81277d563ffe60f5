#include "netaddr/IPv4.h"

#include <algorithm>
#include <charconv>

#include "netaddr/PaddedText.h"

namespace quillet {
namespace {

constexpr int kWidth = 32;
constexpr std::size_t kOctets = 4;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Where the "/" of a prefix length stands, which ends the text after one or two digits; its size
/// when there is none. The end is the text's very end: a line break after it makes no address.
std::size_t subnetBegin(std::string_view text) {
  const std::size_t slash = std::min(text.rfind('/'), text.size());
  const std::string_view digits = text.substr(std::min(slash + 1, text.size()));
  const bool isSubnet =
      digits.size() <= 2 && !digits.empty() && std::ranges::all_of(digits, isDigit);
  return isSubnet ? slash : text.size();
}

/// Takes one octet from the text's front; false when there is none.
bool takeOctet(std::string_view& text) {
  int value = 0;
  std::size_t length = 0;
  while (length < std::min<std::size_t>(text.size(), 3) && isDigit(text[length])) {
    value = value * 10 + (text[length++] - '0');
  }
  text.remove_prefix(length);
  return length > 0 && value <= 255;
}

}  // namespace

IPv4::IPv4(std::string_view address) : SubnetAddress(address, kWidth, kOctets) {
  v4_ = true;
  const std::size_t end = subnetBegin(address);
  if (end < address.size() && !setSubnet(address.substr(end + 1))) {
    return;
  }
  addressMinusSufix_ = address.substr(0, end);
  parse(addressMinusSufix_);
}

bool IPv4::isDotted(std::string_view text) {
  for (std::size_t i = 0; i + 1 < kOctets; ++i) {
    if (!takeOctet(text) || !text.starts_with('.')) {
      return false;
    }
    text.remove_prefix(1);
  }
  return takeOctet(text) && text.empty();
}

void IPv4::parse(std::string_view address) {
  resetParsed();
  valid_ = isDotted(address);
  if (!valid_) {
    fail("Invalid IPv4 Address");
  }
  parsedAddress_.reserve(kOctets);
  std::size_t dot = address.find('.');
  while (dot != std::string_view::npos) {
    parsedAddress_.emplace_back(address.substr(0, dot));
    address.remove_prefix(dot + 1);
    dot = address.find('.');
  }
  parsedAddress_.emplace_back(address);
}

std::uint64_t IPv4::octet(std::size_t index) const {
  std::uint64_t value = 0;
  if (index < parsedAddress_.size()) {
    const std::string& text = parsedAddress_[index];
    std::from_chars(text.data(), text.data() + text.size(), value);
  }
  return value;
}

std::optional<std::string> IPv4::correctForm() const {
  if (parsedAddress_.empty()) {
    return std::nullopt;
  }
  std::string text;
  for (std::size_t i = 0; i < parsedAddress_.size(); ++i) {
    text.append(i == 0 ? "" : ".");
    appendDecimal(text, octet(i));
  }
  return text;
}

std::string IPv4::hex() const {
  std::string text;
  for (std::size_t i = 0; i < parsedAddress_.size(); ++i) {
    text.append(i == 0 ? "" : ":");
    appendHexadecimal(text, octet(i), 2);
  }
  return text;
}

std::string IPv4::v6Group() const {
  const platform::Data bytes = data();
  std::string text;
  appendHexadecimal(text, std::uint64_t{bytes[0]} << 8 | bytes[1]);
  text.push_back(':');
  appendHexadecimal(text, std::uint64_t{bytes[2]} << 8 | bytes[3]);
  return text;
}

std::string IPv4::reversedForm() const {
  std::string text;
  for (std::size_t i = parsedAddress_.size(); i-- > 0;) {
    appendDecimal(text, octet(i));
    text.push_back('.');
  }
  return text.empty() ? text : text.append("in-addr.arpa.");
}

platform::Data IPv4::data() const {
  platform::Data bytes;
  for (std::size_t i = 0; i < kOctets; ++i) {
    bytes.push_back(static_cast<std::uint8_t>(octet(i)));
  }
  return bytes;
}

BigInt IPv4::bigInteger() const {
  if (!valid_) {
    return {};
  }
  std::string digits;
  for (const std::uint8_t byte : data()) {
    appendHexadecimal(digits, byte, 2);
  }
  return {digits, 16};
}

IPv4 IPv4::ipv4FromInteger(std::uint32_t value) {
  std::string hex;
  appendHexadecimal(hex, value, 2);
  return ipv4FromHex(hex);
}

IPv4 IPv4::ipv4FromHex(std::string_view hex) {
  std::string digits(hex);
  std::erase(digits, ':');
  digits = stringByPaddingLeftToLength(digits, 2 * kOctets, "0");
  std::string dotted;
  for (std::size_t i = 0; i < kOctets; ++i) {
    const std::string_view pair = std::string_view(digits).substr(2 * i, 2);
    unsigned octet = 0;
    const auto read = std::from_chars(pair.begin(), pair.end(), octet, 16);
    dotted.append(i == 0 ? "" : ".");
    if (read.ptr == pair.end()) {
      appendDecimal(dotted, octet);
    } else {
      dotted.append(pair);  // stands as it is, and no octet is read from it
    }
  }
  return IPv4(dotted);
}

IPv4 IPv4::fromBigInteger(const BigInt& value) {
  return ipv4FromInteger(static_cast<std::uint32_t>(value.intValue()));
}

}  // namespace quillet
