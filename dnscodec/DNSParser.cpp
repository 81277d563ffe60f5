#include "dnscodec/DNSParser.h"

#include <DeploymentValues.h>

#include <algorithm>
#include <memory>
#include <utility>

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

using OptRef = std::shared_ptr<DNSOPTResourceRecord>;

constexpr std::size_t kOptionHeadSize = 4;
constexpr std::size_t kMaxOptionLength = 0xFFFF;

constexpr std::uint16_t kTypeA = 1;
constexpr std::uint16_t kTypeAaaa = 28;
constexpr std::uint16_t kTypeHttps = 65;

// Reckoned, not looked up: so the compiler makes sixteen digits at a time.
char hexDigit(int nibble) { return static_cast<char>(nibble + (nibble > 9 ? 'a' - 10 : '0')); }

void appendHex(std::string& out, DataView bytes) {
  const auto start = out.size();
  out.resize(start + 2 * bytes.size());
  char* const digits = out.data() + start;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    digits[2 * i] = hexDigit(bytes[i] >> 4);
    digits[2 * i + 1] = hexDigit(bytes[i] & 0xF);
  }
}

/// Whether `value` can be an option's text; when it cannot, that is logged.
bool fitsOption(std::uint16_t code, std::string_view value) {
  if (value.size() > kMaxOptionLength) {
    NSLog("inject value: ", code, " left out, too long: ", value.size(), " bytes");
    return false;
  }
  return true;
}

void writeOption(WireWriter& block, std::uint16_t code, std::string_view value) {
  block.writeUInt16(code);
  block.writeUInt16(static_cast<std::uint16_t>(value.size()));
  block.writeBytes(platform::bytesOf(value));
}

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

/// The sizes of all options together.
std::size_t blockSize(const DNSParser::Flags& flags) {
  std::size_t size = 0;
  for (const auto& [key, value] : flags) {
    size += kOptionHeadSize + value.size();
  }
  return size;
}

/// The command line that sends the same options by hand, as far as it stands without them.
std::string beginDebugLine(const DNSParser::Flags& flags) {
  constexpr std::size_t kFixedSize = 64;
  constexpr std::size_t kFixedSizeOfOption = 17;  // "+ednsopt=65001: "
  std::string line;
  line.reserve(kFixedSize + kFixedSizeOfOption * flags.size() + 2 * blockSize(flags));
  line.append("dig @");
  line.append(deployment::kFilteringDns);
  line.append(" -p 81 +edns=0 +bufsize=4096 ");
  return line;
}

void appendToDebugLine(std::string& line, std::uint16_t code, std::string_view value) {
  line.append("+ednsopt=");
  platform::describe(line, code);
  line.push_back(':');
  appendHex(line, platform::bytesOf(value));
  line.push_back(' ');
}

OptRef optRecord(Data options) {
  auto opt = std::make_shared<DNSOPTResourceRecord>();
  opt->name = "0";
  opt->type = DNSOPTResourceRecord::kType;
  opt->data = std::move(options);
  return opt;
}

Data inject(const Data& datagram, const OptRef& opt) {
  DNSMessageDecoder decoder;
  decoder.decodeMessageInBuffer(datagram);
  if (!decoder.message) {
    return datagram;
  }
  auto& message = DNSParser::checkDnsMessage(*decoder.message);
  message.additionalRecords.assign(1, opt);
  return DNSMessageEncoder::encode(message);
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
  const auto opt = optRecord(buildEdnsDataFromDict(flags));
  std::vector<Data> injected;
  injected.reserve(datagrams.size());
  for (const auto& datagram : datagrams) {
    injected.push_back(inject(datagram, opt));
    NSLog("hex data = ", hexStringForData(injected.back()).value());
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
  if (!fitsOption(code, value)) {
    return {};
  }
  WireWriter option(kOptionHeadSize + value.size());
  writeOption(option, code, value);
  return option.finish();
}

Data DNSParser::buildEdnsDataWithCodes(const std::vector<std::uint16_t>& codes,
                                       const std::vector<std::string>& values) {
  const auto count = std::min(codes.size(), values.size());
  std::size_t size = 0;
  for (std::size_t i = 0; i < count; ++i) {
    size += kOptionHeadSize + values[i].size();
  }
  WireWriter block(size);
  for (std::size_t i = 0; i < count; ++i) {
    if (fitsOption(codes[i], values[i])) {
      writeOption(block, codes[i], values[i]);
    }
  }
  return block.finish();
}

Data DNSParser::buildEdnsDataFromDict(const std::optional<Flags>& flags) {
  static const Flags kNone;
  const Flags& options = flags ? *flags : kNone;
  WireWriter block(blockSize(options));
  std::string debugLine = beginDebugLine(options);
  for (const auto& [key, value] : options) {
    const std::uint16_t code = optionCode(key);
    if (fitsOption(code, value)) {
      NSLog("inject value: ", code, " : ", value, " ");
      appendToDebugLine(debugLine, code, value);
      writeOption(block, code, value);
    }
  }
  NSLog(debugLine);
  return block.finish();
}

DNSMessage& DNSParser::checkDnsMessage(DNSMessage& message) {
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
