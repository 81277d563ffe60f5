#include "dnscodec/DNSParser.h"

#include <DeploymentValues.h>

#include <algorithm>

#include "dnscodec/DNSMessageDecoder.h"
#include "dnscodec/DNSMessageEncoder.h"
#include "dnscodec/DNSOPTResourceRecord.h"
#include "dnscodec/WireWriter.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/URLHost.h"

namespace quillet {

using platform::Data;
using platform::DataView;
using platform::NSLog;

namespace {

constexpr std::size_t kMaxOptionLength = 0xFFFF;
constexpr std::size_t kOptionHeadSize = 4;

constexpr std::uint16_t kTypeA = 1;
constexpr std::uint16_t kTypeAaaa = 28;
constexpr std::uint16_t kTypeHttps = 65;

void appendHex(std::string& out, DataView bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  const auto start = out.size();
  out.resize(start + 2 * bytes.size());
  char* digit = out.data() + start;
  for (const std::uint8_t byte : bytes) {
    *digit++ = kDigits[byte >> 4];
    *digit++ = kDigits[byte & 0xF];
  }
}

void appendOption(Data& block, std::uint16_t code, std::string_view value) {
  if (value.size() > kMaxOptionLength) {
    NSLog("inject value: ", code, " is too long, ", value.size(), " bytes");
    return;
  }
  WireWriter writer(block);
  writer.writeUInt16(code);
  writer.writeUInt16(static_cast<std::uint16_t>(value.size()));
  writer.writeBytes(platform::bytesOf(value));
}

/// The decimal integer that `key` begins with, cut to 16 bits: an optional sign, then digits. The arithmetic of
/// 16 bits gives the low bits of a number of any length.
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

void logType(std::uint16_t type) {
  switch (type) {
    case kTypeA:
      NSLog("-> dnsType1 = A");
      break;
    case kTypeAaaa:
      NSLog("-> dnsType2 = AAAA");
      break;
    case kTypeHttps:
      NSLog("-> dnsType3 = HTTPSSVC");
      break;
    default:
      NSLog("-> dnsTypeRaw = ", type);
  }
}

}  // namespace

std::vector<Data> DNSParser::injectFlagsToDatagrams(const std::vector<Data>& datagrams,
                                                    const std::optional<Flags>& flags) {
  const auto block = buildEdnsDataFromDict(flags);
  std::vector<Data> injected;
  injected.reserve(datagrams.size());
  for (const auto& datagram : datagrams) {
    injected.push_back(injectFlagsTo(datagram, block));
    NSLog("hex data = ", *hexStringForData(injected.back()));
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

Data DNSParser::injectFlagsTo(const Data& datagram, const Data& dataForInjection) {
  DNSMessageDecoder decoder;
  decoder.decodeMessageInBuffer(datagram);
  if (!decoder.message) {
    return datagram;
  }
  auto message = checkDnsMessage(*std::move(decoder.message));
  auto opt = std::make_shared<DNSOPTResourceRecord>();
  opt->name = "0";
  opt->type = DNSOPTResourceRecord::kType;
  opt->data = dataForInjection;
  message.additionalRecords.assign(1, std::move(opt));
  return DNSMessageEncoder::encode(message);
}

Data DNSParser::injectFlagsTo(const Data& datagram, const std::vector<std::uint16_t>& codes,
                              const std::vector<std::string>& values) {
  return injectFlagsTo(datagram, buildEdnsDataWithCodes(codes, values));
}

Data DNSParser::buildEdnsDataWithCode(std::uint16_t code, std::string_view value) {
  Data option;
  option.reserve(kOptionHeadSize + std::min(value.size(), kMaxOptionLength));
  appendOption(option, code, value);
  return option;
}

Data DNSParser::buildEdnsDataWithCodes(const std::vector<std::uint16_t>& codes,
                                       const std::vector<std::string>& values) {
  const auto count = std::min(codes.size(), values.size());
  std::size_t size = 0;
  for (std::size_t i = 0; i < count; ++i) {
    size += kOptionHeadSize + values[i].size();
  }
  Data block;
  block.reserve(size);
  for (std::size_t i = 0; i < count; ++i) {
    appendOption(block, codes[i], values[i]);
  }
  return block;
}

Data DNSParser::buildEdnsDataFromDict(const std::optional<Flags>& flags) {
  Data block;
  std::string debugLine = std::string("dig @") + deployment::kFilteringDns + " -p 81 +edns=0 +bufsize=4096 ";
  if (flags) {
    for (const auto& [key, value] : *flags) {
      const auto code = optionCode(key);
      NSLog("inject value: ", code, " : ", value, " ");
      debugLine.append("+ednsopt=");
      platform::describe(debugLine, code);
      debugLine.push_back(':');
      appendHex(debugLine, platform::bytesOf(value));
      debugLine.push_back(' ');
      appendOption(block, code, value);
    }
  }
  NSLog(debugLine);
  return block;
}

DNSMessage DNSParser::checkDnsMessage(DNSMessage message) {
  for (const auto& question : message.questions) {
    if (question->name.find("http") == std::string::npos) {
      logType(question->type);
    } else if (auto host = platform::urlHost(question->name)) {
      question->name = *std::move(host);
    }
    NSLog("--> ", question->name);
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
