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

/// Gives `each` the texts between dots, one after another; none of no text.
template <class Each>
void splitAtDots(const std::optional<std::string>& text, Each each) {
  if (!text) {
    return;
  }
  std::size_t begin = 0;
  for (std::size_t dot = text->find('.'); dot < text->size(); dot = text->find('.', begin)) {
    each(std::string_view(*text).substr(begin, dot - begin));
    begin = dot + 1;
  }
  each(std::string_view(*text).substr(begin));
}

/// The number at the text's front; 0 for none, or for one that is too large.
std::uint64_t octetOf(std::string_view text) {
  std::uint64_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
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
  sizeWithoutSubnet_ = end;
  parse(address.substr(0, end));
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
  reset();
  parsed_ = address;
  valid_ = isDotted(address);
  if (!valid_) {
    fail("Invalid IPv4 Address");
  }
}

std::vector<std::string> IPv4::parsedAddress() const {
  std::vector<std::string> octets;
  octets.reserve(parsed_ ? kOctets : 0);
  splitAtDots(parsed_, [&octets](std::string_view octet) { octets.emplace_back(octet); });
  return octets;
}

std::optional<std::string> IPv4::correctForm() const {
  std::optional<std::string> text;
  splitAtDots(parsed_, [&text](std::string_view octet) {
    if (text) {
      text->push_back('.');
    }
    appendDecimal(text ? *text : text.emplace(), octetOf(octet));
  });
  return text;
}

std::string IPv4::hex() const {
  std::string text;
  splitAtDots(parsed_, [&text](std::string_view octet) {
    text.append(text.empty() ? "" : ":");
    appendHexadecimal(text, octetOf(octet), 2);
  });
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
  const std::vector<std::string> octets = parsedAddress();
  std::string text;
  std::for_each(octets.rbegin(), octets.rend(), [&text](std::string_view octet) {
    appendDecimal(text, octetOf(octet));
    text.push_back('.');
  });
  return text.empty() ? text : text.append("in-addr.arpa.");
}

platform::Data IPv4::data() const {
  platform::Data bytes;
  splitAtDots(parsed_, [&bytes](std::string_view octet) {
    bytes.push_back(static_cast<std::uint8_t>(octetOf(octet)));
  });
  bytes.resize(kOctets);
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
