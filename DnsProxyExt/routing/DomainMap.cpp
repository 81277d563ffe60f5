#include "DnsProxyExt/routing/DomainMap.h"

#include <map>

#include "platform/base/Description.h"

namespace quillet {

DomainMap::DomainMap(std::initializer_list<std::pair<std::string, DNSHostRef>> entries) {
  for (const auto& [fragment, server] : entries) {
    set(fragment, server);
  }
}

void DomainMap::set(std::string fragment, DNSHostRef server) {
  if (!fragment.empty()) {
    lengths_.insert(fragment.size());
  }
  servers_.insert_or_assign(std::move(fragment), std::move(server));
  serverTexts_.reset();
}

const DomainMap::Entry* DomainMap::find(std::string_view domain) const {
  if (domain.size() > kMaxSearched) {
    domain.remove_prefix(domain.size() - kMaxSearched);
  }
  for (auto length = lengths_.lower_bound(domain.size()); length != lengths_.end(); ++length) {
    for (std::size_t start = 0; start + *length <= domain.size(); ++start) {
      const auto found = servers_.find(domain.substr(start, *length));
      if (found != servers_.end()) {
        return &*found;
      }
    }
  }
  return nullptr;
}

DNSHostRef DomainMap::server(std::string_view domain) const {
  const auto* const entry = find(domain);
  return entry != nullptr ? entry->second : nullptr;
}

const std::set<std::string>& DomainMap::serverTexts() const {
  if (!serverTexts_) {
    serverTexts_ = findServerTexts();
  }
  return *serverTexts_;
}

std::set<std::string> DomainMap::findServerTexts() const {
  std::set<std::string> texts;
  const Utils::DNSHost* last = nullptr;  // the entries of one server often follow one another
  for (const auto& [fragment, server] : servers_) {
    if (texts.size() == kMaxShown) {
      break;
    }
    if (std::exchange(last, server.get()) != server.get() && server) {
      texts.insert(server->description());
    }
  }
  return texts;
}

void DomainMap::describe(std::string& out) const {
  const std::map<std::string_view, DNSHostRef> ordered(servers_.begin(), servers_.end());
  const std::size_t end = out.size() + kMaxPrinted;
  out.push_back('[');
  const char* separator = "";
  for (const auto& [fragment, server] : ordered) {
    out.append(separator);
    if (out.size() > end) {
      out.append("...");
      break;
    }
    platform::debugDescribe(out, fragment);
    out.append(": ");
    platform::debugDescribe(out, server);
    separator = ", ";
  }
  out.append(ordered.empty() ? ":]" : "]");
}

}  // namespace quillet
