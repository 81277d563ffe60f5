// What decodes stays within its budget of names; what encodes is a well-formed message by an
// independent walk, and decodes to the same fields.

#include <string>

#include "dns_tools/Message.h"
#include "dns_tools/Reader.h"
#include "dns_tools/Record.h"
#include "dns_tools/TextRecord.h"
#include "fuzz/Target.h"
#include "fuzz/WireWalk.h"

namespace quillet::fuzz {

using namespace DnsToolsSocket;

/// The printed form, with the data of records that have no kind of their own, and less what is
/// never written: the unique bit of questions, the values of text records, empty pieces in names.
std::string fieldsOf(Message message) {
  std::string data;
  for (auto& question : message.questions) {
    question.unique = false;
  }
  for (auto* records : {&message.answers, &message.authorities, &message.additional}) {
    for (auto& record : *records) {
      if (auto* text = dynamic_cast<TextRecord*>(&*record)) {
        text->values.clear();
      } else if (const auto* plain = dynamic_cast<const Record*>(&*record)) {
        data.append(platform::textOf(plain->data));
      }
    }
  }
  std::string fields;
  for (const char c : message.debugDescription()) {
    if (c != '.' || !(fields.ends_with('.') || fields.ends_with('"'))) {
      fields.push_back(c);
    }
  }
  return fields + data;
}

std::size_t sizeOfNames(const Message& message) {
  std::size_t size = 0;
  for (const auto& question : message.questions) {
    size += question.name.size();
  }
  for (const auto* records : {&message.answers, &message.authorities, &message.additional}) {
    for (const auto& record : *records) {
      size += record->name().size();
    }
  }
  return size;
}

void run(platform::DataView input) {
  require(!Message::deserializeTCP(input) || input.size() >= 14);
  const auto message = Message::deserialize(input);
  if (!message) {
    return;
  }
  // The root costs nothing and is a text of one character, in each name that the bytes can hold.
  require(sizeOfNames(*message) <= input.size() * (Reader::kNameCostPerOctet + 1));
  const auto bytes = message->serialize();
  if (!bytes) {
    // All that decoding lets through and encoding does not: RDATA that grew because its names are
    // written out.
    return require(bytes.error() == EncodeError::dataTooLong);
  }
  const auto entries = entriesOf(*bytes, /*isCompressed=*/true);
  require(entries &&
          entries->counts == std::array{message->questions.size(), message->answers.size(),
                                        message->authorities.size(), message->additional.size()});
  const auto again = Message::deserialize(*bytes);
  // The bytes may be fewer than there were, and with them the budget for names.
  require(again ? fieldsOf(*again) == fieldsOf(*message)
                : again.error() == DecodeError::invalidLabelSize && bytes->size() < input.size());
}

}  // namespace quillet::fuzz
