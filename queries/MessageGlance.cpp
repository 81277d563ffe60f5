#include "queries/MessageGlance.h"

#include "dns_tools/Question.h"
#include "dns_tools/Reader.h"

namespace quillet {

using DnsToolsSocket::Question;
using DnsToolsSocket::Reader;

namespace {

constexpr std::uint16_t kRcodeMask = 0x000F;
constexpr std::uint16_t kOptType = 41;
constexpr int kExtendedRcodeShift = 24;  // within the TTL of an OPT record
constexpr int kRcodeBits = 4;

/// The upper eight bits of the RCODE; 0 without an OPT record among the next `count` records.
std::uint32_t extendedRcode(Reader& reader, std::uint32_t count) {
  for (; count > 0 && !reader.error(); --count) {
    reader.readName();
    const auto type = reader.readUInt16();
    reader.readUInt16();
    const auto ttl = reader.readUInt32();
    reader.skip(reader.readUInt16());
    if (type == kOptType) {
      return ttl >> kExtendedRcodeShift;
    }
  }
  return 0;
}

}  // namespace

MessageGlance MessageGlance::at(platform::DataView message) {
  constexpr std::size_t kOtherCounts = 6;
  MessageGlance glance;
  Reader reader(message);
  const auto id = reader.readUInt16();
  if (!reader.error()) {
    glance.id = id;
  }
  reader.readUInt16();
  const auto questions = reader.readUInt16();
  reader.readBytes(kOtherCounts, DnsToolsSocket::DecodeError::invalidIntegerSize);
  if (questions == 0 || reader.error()) {
    return glance;
  }
  auto question = Question::read(reader);
  if (!reader.error()) {
    if (question.name.size() > 1) {
      question.name.pop_back();
    }
    glance.name = std::move(question.name);
    glance.type = question.type;
  }
  return glance;
}

std::optional<std::uint16_t> rcodeOf(platform::DataView answer) {
  Reader reader(answer);
  reader.readUInt16();
  const auto flags = reader.readUInt16();
  const auto questions = reader.readUInt16();
  const std::uint32_t answers = reader.readUInt16();
  const std::uint32_t authorities = reader.readUInt16();
  const auto additional = reader.readUInt16();
  if (reader.error()) {
    return std::nullopt;
  }
  const auto low = static_cast<std::uint16_t>(flags & kRcodeMask);
  if (additional == 0) {
    return low;
  }
  for (auto count = questions; count > 0 && !reader.error(); --count) {
    Question::read(reader);
  }
  const auto high = extendedRcode(reader, answers + authorities + additional);
  return static_cast<std::uint16_t>(low | high << kRcodeBits);
}

}  // namespace quillet
