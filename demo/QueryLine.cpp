#include "demo/QueryLine.h"

#include "demo/EdnsOptions.h"
#include "dns_tools/Record.h"
#include "dns_tools/RecordType.h"
#include "platform/log/LogEscape.h"

namespace quillet {

using DnsToolsSocket::Message;
using DnsToolsSocket::Question;
using DnsToolsSocket::RecordType;

namespace {

constexpr std::uint16_t kOptType = 41;  // RFC 6891, section 6.1.1

std::string typeText(std::uint16_t type) {
  switch (type) {
    case RecordType::host:
      return "A";
    case RecordType::host6:
      return "AAAA";
    case RecordType::HTTPSSVC:
      return "HTTPS";
    default:
      return "TYPE" + std::to_string(type);  // RFC 3597, section 5
  }
}

/// Without the final dot, unless that is all there is.
std::string_view shownName(std::string_view name) {
  return name.size() > 1 && name.ends_with('.') ? name.substr(0, name.size() - 1) : name;
}

void appendOptions(std::string& out, platform::DataView rdata) {
  const auto options = readEdnsOptions(rdata);
  if (!options) {
    return;
  }
  for (const EdnsOption& option : *options) {
    out.push_back(' ');
    out.append(std::to_string(option.code));
    out.push_back('=');
    platform::appendEscaped(out, platform::textOf(option.value));
  }
}

}  // namespace

void appendQueryLine(std::string& out, const Message& query) {
  if (!query.questions.empty()) {
    const Question& question = query.questions.front();
    out.append(typeText(question.type));
    out.push_back(' ');
    platform::appendEscaped(out, shownName(question.name));
  } else {
    out.append("no question");
  }
  out.push_back(' ');
  const std::size_t before = out.size();
  for (const auto& record : query.additional) {
    // The filtering service's OPT record has an owner name of its own, so the type alone tells.
    const auto* opt = dynamic_cast<const DnsToolsSocket::Record*>(&*record);
    if (opt != nullptr && opt->type() == kOptType) {
      appendOptions(out, opt->data);
    }
  }
  out.append(out.size() == before ? " no identity\n" : "\n");
}

}  // namespace quillet
