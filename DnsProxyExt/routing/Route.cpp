#include "DnsProxyExt/routing/Route.h"

#include "platform/base/Description.h"
#include "platform/base/RemoveOccurrences.h"

namespace quillet {

namespace {

std::string_view opening(Route::Rule rule) {
  switch (rule) {
    case Route::Rule::localNetworkApp:
      return "connect to local network  DNS using ";
    case Route::Rule::allowedApp:
      return "connect to 3th part DNS using ";
    case Route::Rule::localDomain:
      return "Mapped to use local DNS server - > connect to local  ";
    case Route::Rule::whitelistedDomain:
      return "Mapped to use whitelisted DNS server - > connect to DNS  ";
    case Route::Rule::filtering:
      break;
  }
  return "connect to DNS using Quillet DNS (";
}

}  // namespace

std::string routedDomain(std::string_view questionName) {
  auto domain = platform::removingOccurrences(questionName, "www.");
  if (domain.ends_with('.')) {
    domain.pop_back();
  }
  return domain;
}

std::string lineOf(const Route& route) {
  std::string line(opening(route.rule));
  if (isRelayed(route.rule)) {
    return line.append(route.server->address);
  }
  platform::describe(line, route.server);
  line.append(", q: ");
  platform::describe(line, route.domain);
  return line;
}

bool isRelayed(Route::Rule rule) {
  return rule == Route::Rule::localNetworkApp || rule == Route::Rule::allowedApp;
}

}  // namespace quillet
