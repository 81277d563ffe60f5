#include "DnsProxyExt/upstream/WhitelistedDomains.h"

#include "platform/store/JSONDocument.h"

namespace quillet {

using platform::Error;
using platform::JSONDocument;
using platform::JSONFault;
using platform::JSONObject;
using platform::JSONValue;

namespace {

template <class T>
using Decoded = tl::expected<T, Error>;

tl::unexpected<Error> isMissing() {
  return tl::unexpected(Error("The data couldn’t be read because it is missing."));
}

tl::unexpected<Error> isWrong() {
  return tl::unexpected(Error("The data couldn’t be read because it isn’t in the correct format."));
}

/// Says of a member that the reader left out why.
tl::unexpected<Error> isMissing(const std::string& name, std::optional<JSONFault> fault) {
  return fault ? tl::unexpected(Error(name + ": " + textOf(*fault))) : isMissing();
}

/// The value of a member that has to be there and to be a `T`. Borrowed from `object`, a part of
/// `document`.
template <class T>
Decoded<const T*> member(const JSONDocument& document, const JSONValue& object, const char* name) {
  if (!object.is_object()) {
    return object.is_null() ? isMissing() : isWrong();
  }
  const auto found = object.find(name);
  if (found == object.end()) {
    return isMissing(name, document.faultOf(object.get_ref<const JSONObject&>(), name));
  }
  const auto* value = found->get_ptr<const T*>();
  if (value == nullptr) {
    return found->is_null() ? isMissing() : isWrong();
  }
  return value;
}

Decoded<std::vector<std::string>> texts(const JSONValue::array_t& array) {
  std::vector<std::string> result;
  for (const auto& element : array) {
    const auto* text = element.get_ptr<const std::string*>();
    if (text == nullptr) {
      return element.is_null() ? isMissing() : isWrong();
    }
    result.push_back(*text);
  }
  return result;
}

Decoded<WhitelistedDNS> server(const JSONDocument& document, const JSONValue& json) {
  const auto domains = member<JSONValue::array_t>(document, json, "assignedDomains");
  if (!domains) {
    return tl::unexpected(domains.error());
  }
  auto assigned = texts(**domains);
  if (!assigned) {
    return tl::unexpected(assigned.error());
  }
  const auto address = member<std::string>(document, json, "dnsServerIP");
  if (!address) {
    return tl::unexpected(address.error());
  }
  return WhitelistedDNS{*std::move(assigned), **address};
}

}  // namespace

tl::expected<WhitelistedDomains, Error> WhitelistedDomains::decode(platform::DataView bytes) {
  const auto document = platform::parseJSON(platform::textOf(bytes));
  if (!document) {
    return document.error() == JSONFault::kNotJSON
               ? isWrong()
               : tl::unexpected(Error(textOf(document.error())));
  }
  const auto& json = document->value;
  const auto status = member<bool>(*document, json, "status");
  if (!status) {
    return tl::unexpected(status.error());
  }
  const auto settings = member<JSONValue::array_t>(*document, json, "dnsServerSettings");
  if (!settings) {
    return tl::unexpected(settings.error());
  }
  WhitelistedDomains result{.status = **status, .dnsServerSettings = {}};
  for (const auto& element : **settings) {
    auto decoded = server(*document, element);
    if (!decoded) {
      return tl::unexpected(decoded.error());
    }
    result.dnsServerSettings.push_back(*std::move(decoded));
  }
  return result;
}

}  // namespace quillet
