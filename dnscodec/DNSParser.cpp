#include "dnscodec/DNSParser.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "dnscodec/DNSMessage.h"
#include "dnscodec/DNSResourceRecord.h"
#include "dnscodec/OptionBlock.h"
#include "dnscodec/QuestionOctets.h"
#include "platform/base/URLHost.h"
#include "platform/log/NSLog.h"

namespace quillet {

using platform::Data;
using platform::DataView;
using platform::NSLog;
using platform::NSLogStep;

namespace {

using OptRef = std::shared_ptr<DNSOPTResourceRecord>;

constexpr std::uint16_t kTypeA = 1;
constexpr std::uint16_t kTypeAaaa = 28;
constexpr std::uint16_t kTypeHttps = 65;

/// The decimal integer that `key` begins with, cut to 16 bits: an optional sign, then digits. The
/// arithmetic of 16 bits gives the low bits of a number of any length.
std::uint16_t optionCode(std::string_view key) {
  const bool negative = key.starts_with('-');
  if (negative || key.starts_with('+')) {
    key.remove_prefix(1);
  }
  std::uint16_t code = 0;
  for (const char c : key) {
    if (c < '0' || c > '9') {
      break;
    }
    code = static_cast<std::uint16_t>(code * 10 + (c - '0'));
  }
  return negative ? static_cast<std::uint16_t>(-code) : code;
}

OptRef optRecord(Data options) {
  if (options.size() > DNSResourceRecord::kMaxDataSize) {
    NSLog("inject value: all left out, too long: ", options.size(), " bytes");
  }
  auto opt = std::make_shared<DNSOPTResourceRecord>();
  opt->name = "0";
  opt->type = DNSOPTResourceRecord::kType;
  opt->data = std::move(options);
  return opt;
}

/// For a query that cannot be taken apart and written again, because of `reason`.
Data injectAfterQuestions(const Data& datagram, const OptRef& opt, std::string_view reason) {
  if (auto injected = withQuestionOctets(datagram, *opt)) {
    NSLogStep("inject: query ", reason, ", its question octets are kept");
    return *std::move(injected);
  }
  NSLogStep("inject: query ", reason, ", it goes out without identity");
  return datagram;
}

Data inject(const Data& datagram, const OptRef& opt) {
  DNSMessageDecoder decoder;
  decoder.decodeMessageInBuffer(datagram);
  if (!decoder.message) {
    return injectAfterQuestions(datagram, opt, "cannot be decoded");
  }
  auto& message = DNSParser::checkDnsMessage(*decoder.message);
  message.additionalRecords = {opt};
  auto injected = DNSMessageEncoder::encode(message);
  // Written in full, names that were pointers can make a message that no datagram carries.
  return injected.size() <= kMaxDatagramSize
             ? injected
             : injectAfterQuestions(datagram, opt, "is too long written in full");
}

void logType(std::uint16_t type) {
  switch (type) {
    case kTypeA:
      NSLogStep("-> dnsType1 = A");
      break;
    case kTypeAaaa:
      NSLogStep("-> dnsType2 = AAAA");
      break;
    case kTypeHttps:
      NSLogStep("-> dnsType3 = HTTPSSVC");
      break;
    default:
      NSLogStep("-> dnsTypeRaw = ", type);
  }
}

}  // namespace

std::vector<Data> DNSParser::injectFlagsToDatagrams(const std::vector<Data>& datagrams,
                                                    const std::optional<Flags>& flags) {
  const auto opt = optRecord(buildEdnsDataFromDict(flags));
  std::vector<Data> injected;
  injected.reserve(datagrams.size());
  for (const auto& datagram : datagrams) {
    injected.push_back(inject(datagram, opt));
    NSLogStep("hex data = ",
              platform::Lazily([&] { return hexStringForData(injected.back()).value(); }));
  }
  return injected;
}

std::vector<Data> DNSParser::injectFlagsToDatagrams(const std::vector<Data>& datagrams,
                                                    const std::vector<std::uint16_t>& codes,
                                                    const std::vector<std::string>& values) {
  std::vector<Data> injected;
  injected.reserve(datagrams.size());
  for (const auto& datagram : datagrams) {
    injected.push_back(injectFlagsTo(datagram, codes, values));
  }
  return injected;
}

Data DNSParser::injectFlagsTo(const Data& datagram, Data dataForInjection) {
  return inject(datagram, optRecord(std::move(dataForInjection)));
}

Data DNSParser::injectFlagsTo(const Data& datagram, const std::vector<std::uint16_t>& codes,
                              const std::vector<std::string>& values) {
  return injectFlagsTo(datagram, buildEdnsDataWithCodes(codes, values));
}

Data DNSParser::buildEdnsDataWithCode(std::uint16_t code, std::string_view value) {
  OptionBlock block(OptionBlock::kHeadSize + value.size());
  block.add(code, value);
  return block.finish();
}

Data DNSParser::buildEdnsDataWithCodes(const std::vector<std::uint16_t>& codes,
                                       const std::vector<std::string>& values) {
  const auto count = std::min(codes.size(), values.size());
  std::size_t size = OptionBlock::kHeadSize * count;
  for (std::size_t i = 0; i < count; ++i) {
    size += values[i].size();
  }
  OptionBlock block(size);
  for (std::size_t i = 0; i < count; ++i) {
    block.add(codes[i], values[i]);
  }
  return block.finish();
}

Data DNSParser::buildEdnsDataFromDict(const std::optional<Flags>& flags) {
  static const Flags kNone;
  const Flags& options = flags ? *flags : kNone;
  std::size_t valueSize = 0;
  for (const auto& [key, value] : options) {
    valueSize += value.size();
  }
  OptionBlock block(OptionBlock::kHeadSize * options.size() + valueSize);
  std::optional<DigCommand> command;
  if (platform::logsSteps()) {
    command.emplace(options.size(), valueSize);
  }
  for (const auto& [key, value] : options) {
    const std::uint16_t code = optionCode(key);
    if (block.add(code, value)) {
      NSLogStep("inject value: ", code, " : ", value, " ");
      if (command) {
        command->addOption(code, value);
      }
    }
  }
  if (command) {
    NSLogStep(command->text());
  }
  return block.finish();
}

DNSMessage& DNSParser::checkDnsMessage(DNSMessage& message) {
  for (const auto& question : message.questions) {
    if (question->name.find("http") == std::string::npos) {
      logType(question->type);
    } else if (auto host = platform::urlHost(question->name)) {
      question->name = *std::move(host);
    }
    NSLogStep("--> ", question->name);
  }
  return message;
}

std::optional<std::string> DNSParser::hexStringForData(std::optional<DataView> data) {
  if (!data) {
    return std::nullopt;
  }
  std::string digits;
  appendHex(digits, *data);
  return digits;
}

}  // namespace quillet
