// What decodes stays within its budget of names; what encodes is a well-formed message by an
// independent walk, and decodes to the same fields.

#include <string>

#include "dns_tools/AliasRecord.h"
#include "dns_tools/HostRecord.h"
#include "dns_tools/Message.h"
#include "dns_tools/NameServerRecord.h"
#include "dns_tools/PointerRecord.h"
#include "dns_tools/Reader.h"
#include "dns_tools/Record.h"
#include "dns_tools/ServiceRecord.h"
#include "dns_tools/StartOfAuthorityRecord.h"
#include "dns_tools/TextRecord.h"
#include "fuzz/Require.h"
#include "fuzz/WireWalk.h"

namespace {

using namespace DnsToolsSocket;
using platform::DataView;
using quillet::fuzz::require;

/// The fields of a message as one text, less what is never written: the unique bit of questions and
/// the values of text records. In names empty pieces do not count.
class Fields {
 public:
  explicit Fields(const Message& message) {
    add(message.id, static_cast<int>(message.type), message.operationCode,
        message.authoritativeAnswer, message.truncation, message.recursionDesired,
        message.recursionAvailable, message.returnCode);
    for (const auto& question : message.questions) {
      addName(question.name);
      add(question.type, question.internetClass);
    }
    for (const auto* records : {&message.answers, &message.authorities, &message.additional}) {
      add(records->size());
      for (const auto& record : *records) {
        addRecord(*record);
      }
    }
  }

  bool operator==(const Fields& other) const { return text_ == other.text_; }
  [[nodiscard]] std::size_t nameSize() const { return nameSize_; }

 private:
  template <class... Values>
  void add(const Values&... values) {
    ((platform::describe(text_, values), text_.push_back(' ')), ...);
  }

  void addName(const std::string& name) {
    nameSize_ += name.size();
    bool wasDot = true;
    for (const char c : name) {
      if (c != '.' || !wasDot) {
        text_.push_back(c);
      }
      wasDot = c == '.';
    }
    text_.push_back(' ');
  }

  void addRecord(const ResourceRecord& record) {
    addName(record.name());
    add(record.type(), record.unique(), record.internetClass(), record.ttl());
    if (const auto* host = dynamic_cast<const HostRecord<IPv4>*>(&record)) {
      add(host->ip);
    } else if (const auto* host6 = dynamic_cast<const HostRecord<IPv6>*>(&record)) {
      add(host6->ip);
    } else if (const auto* alias = dynamic_cast<const AliasRecord*>(&record)) {
      addName(alias->canonicalName);
    } else if (const auto* pointer = dynamic_cast<const PointerRecord*>(&record)) {
      addName(pointer->destination);
    } else if (const auto* server = dynamic_cast<const NameServerRecord*>(&record)) {
      addName(server->nameServer);
    } else if (const auto* service = dynamic_cast<const ServiceRecord*>(&record)) {
      add(service->priority, service->weight, service->port);
      addName(service->server);
    } else if (const auto* authority = dynamic_cast<const StartOfAuthorityRecord*>(&record)) {
      addName(authority->mname);
      addName(authority->rname);
      add(authority->serial, authority->refresh, authority->retry, authority->expire,
          authority->minimum);
    } else if (const auto* text = dynamic_cast<const TextRecord*>(&record)) {
      add(text->attributes);
    } else {
      add(platform::textOf(dynamic_cast<const Record&>(record).data));
    }
  }

  std::string text_;
  std::size_t nameSize_ = 0;
};

void checkCounts(const Message& message, DataView bytes) {
  const auto entries = quillet::fuzz::entriesOf(bytes, /*isCompressed=*/true);
  require(entries &&
          entries->counts == std::array{message.questions.size(), message.answers.size(),
                                        message.authorities.size(), message.additional.size()});
}

void checkRoundTrip(const Message& message, const Fields& fields) {
  const auto bytes = message.serialize();
  if (!bytes) {
    // All that decoding lets through and encoding does not: RDATA that grew because its names are
    // written out.
    require(bytes.error() == EncodeError::dataTooLong);
    return;
  }
  checkCounts(message, *bytes);
  const auto again = Message::deserialize(*bytes);
  if (!again) {
    // The bytes may be fewer than there were, and with them the budget for names. A name costs at
    // most one and a half of its text.
    require(again.error() == DecodeError::invalidLabelSize);
    require(fields.nameSize() * 3 / 2 > bytes->size() * Reader::kNameCostPerOctet);
    return;
  }
  require(Fields(*again) == fields);
  require(!message.debugDescription().empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const DataView bytes(data, size);
  if (const auto message = Message::deserialize(bytes)) {
    const Fields fields(*message);
    // The root costs nothing and is a text of one character, in each name that the bytes can hold.
    require(fields.nameSize() <= size * (Reader::kNameCostPerOctet + 1));
    checkRoundTrip(*message, fields);
  }
  if (const auto framed = Message::deserializeTCP(bytes)) {
    require(size >= 14);
  }
  return 0;
}
