#include "DnsProxyExt/registry/MessageFootprint.h"

#include <algorithm>
#include <string>

#include "dns_tools/AliasRecord.h"
#include "dns_tools/NameServerRecord.h"
#include "dns_tools/PointerRecord.h"
#include "dns_tools/Record.h"
#include "dns_tools/ServiceRecord.h"
#include "dns_tools/StartOfAuthorityRecord.h"
#include "dns_tools/TextRecord.h"

namespace quillet {

namespace {

using namespace DnsToolsSocket;

// What the allocator adds at most to what it is asked for.
constexpr std::size_t kAllocation = 24;
// The largest kind of record, and the texts of its name and its data.
constexpr std::size_t kRecordSize = std::max({sizeof(Record), sizeof(StartOfAuthorityRecord),
                                              sizeof(TextRecord), sizeof(ServiceRecord)}) +
                                    4 * kAllocation;
// An entry of a tree: its links and its two texts.
constexpr std::size_t kAttributeSize =
    4 * sizeof(void*) + sizeof(TextRecord::Attributes::value_type) + 3 * kAllocation;

std::size_t textsOf(const TextRecord& record) {
  std::size_t octets = record.values.capacity() * (sizeof(std::string) + kAllocation);
  for (const auto& value : record.values) {
    octets += value.capacity();
  }
  for (const auto& [key, value] : record.attributes) {
    octets += kAttributeSize + key.capacity() + value.capacity();
  }
  return octets;
}

/// Adds the given texts of a record that is of the kind; false when it is of another.
template <class Kind, class... Texts>
bool add(std::size_t& octets, const ResourceRecord& record, Texts Kind::*... texts) {
  const auto* kind = dynamic_cast<const Kind*>(&record);
  if (kind == nullptr) {
    return false;
  }
  octets += (std::size_t{0} + ... + (kind->*texts).capacity());
  return true;
}

std::size_t sizeOf(const ResourceRecord& record) {
  std::size_t octets = kRecordSize + record.name().capacity();
  if (const auto* text = dynamic_cast<const TextRecord*>(&record)) {
    return octets + textsOf(*text);
  }
  // Host records hold no text but their name.
  static_cast<void>(
      add(octets, record, &Record::data) || add(octets, record, &AliasRecord::canonicalName) ||
      add(octets, record, &NameServerRecord::nameServer) ||
      add(octets, record, &PointerRecord::destination) ||
      add(octets, record, &ServiceRecord::server) ||
      add(octets, record, &StartOfAuthorityRecord::mname, &StartOfAuthorityRecord::rname));
  return octets;
}

std::size_t sizeOf(const std::vector<RecordValue>& records) {
  std::size_t octets = records.capacity() * sizeof(RecordValue);
  for (const auto& record : records) {
    octets += sizeOf(*record);
  }
  return octets;
}

}  // namespace

std::size_t footprintOf(const Message& message) {
  std::size_t octets = message.questions.capacity() * sizeof(Question);
  for (const auto& question : message.questions) {
    octets += kAllocation + question.name.capacity();
  }
  return octets + sizeOf(message.answers) + sizeOf(message.authorities) +
         sizeOf(message.additional);
}

}  // namespace quillet
