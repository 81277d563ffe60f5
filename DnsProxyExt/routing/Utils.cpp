#include "DnsProxyExt/routing/Utils.h"

#include "platform/base/DecimalText.h"
#include "platform/base/Description.h"

namespace quillet {

namespace {

constexpr std::int64_t kStandardDnsPort = 53;

/// Cuts the piece before the next ":" off `rest`.
std::string_view takePiece(std::string_view& rest) {
  const auto colon = rest.find(':');
  const auto piece = rest.substr(0, colon);
  rest.remove_prefix(colon == std::string_view::npos ? rest.size() : colon + 1);
  return piece;
}

}  // namespace

Utils::DNSHost::DNSHost(std::string_view text) : address(takePiece(text)) {
  port = platform::decimalInteger(takePiece(text)).value_or(kStandardDnsPort);
}

DNSHostRef Utils::DNSHost::at(std::string_view address, std::string_view port) {
  return std::make_shared<DNSHost>(std::string(address).append(":").append(port));
}

void Utils::DNSHost::describe(std::string& out) const {
  platform::describe(out, address);
  out.push_back(':');
  platform::describe(out, port);
}

std::string Utils::DNSHost::description() const { return platform::description(*this); }

}  // namespace quillet
