#include "dns_tools/Message.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "dns_tools/Reader.h"
#include "dns_tools/Writer.h"

namespace DnsToolsSocket {

using platform::Data;
using platform::DataView;

namespace {

constexpr std::size_t kHeaderSize = 12;
// The description of an answer with two records.
constexpr std::size_t kUsualDescription = 500;
constexpr std::size_t kMaxUInt16 = std::numeric_limits<std::uint16_t>::max();
// The least that an entry takes, its name the root.
constexpr std::size_t kMinQuestionSize = 5;
constexpr std::size_t kMinRecordSize = 11;

// The flags word (RFC 1035 section 4.1.1).
constexpr unsigned kResponse = 0x8000;
constexpr unsigned kAuthoritativeAnswer = 0x0400;
constexpr unsigned kTruncation = 0x0200;
constexpr unsigned kRecursionDesired = 0x0100;
constexpr unsigned kRecursionAvailable = 0x0080;
constexpr unsigned kOperationCodeShift = 11;
constexpr unsigned kCodeMask = 0x000F;

void setFlags(Message& message, unsigned word) {
  message.type = (word & kResponse) != 0 ? MessageType::response : MessageType::query;
  message.operationCode = static_cast<std::uint8_t>(word >> kOperationCodeShift & kCodeMask);
  message.authoritativeAnswer = (word & kAuthoritativeAnswer) != 0;
  message.truncation = (word & kTruncation) != 0;
  message.recursionDesired = (word & kRecursionDesired) != 0;
  message.recursionAvailable = (word & kRecursionAvailable) != 0;
  message.returnCode = static_cast<std::uint8_t>(word & kCodeMask);
}

std::uint16_t flagsOf(const Message& message) {
  const auto flag = [](bool isSet, unsigned bit) { return isSet ? bit : 0U; };
  const unsigned word = flag(message.type == MessageType::response, kResponse) |
                        static_cast<unsigned>(message.operationCode) << kOperationCodeShift |
                        flag(message.authoritativeAnswer, kAuthoritativeAnswer) |
                        flag(message.truncation, kTruncation) |
                        flag(message.recursionDesired, kRecursionDesired) |
                        flag(message.recursionAvailable, kRecursionAvailable) | message.returnCode;
  return static_cast<std::uint16_t>(word);
}

// The count is only what the sender says: no more room is made than the bytes left could fill.
template <std::size_t minSize, class Entries>
void readEntries(Entries& entries, std::size_t count, Reader& reader) {
  entries.reserve(std::min(count, reader.remaining() / minSize));
  while (entries.size() < count && !reader.error()) {
    entries.push_back(Entries::value_type::read(reader));
  }
}

void readMessage(Message& message, Reader& reader) {
  message.id = reader.readUInt16();
  setFlags(message, reader.readUInt16());
  const auto questions = reader.readUInt16();
  const auto answers = reader.readUInt16();
  const auto authorities = reader.readUInt16();
  const auto additional = reader.readUInt16();
  if (questions > 0) {
    readEntries<kMinQuestionSize>(message.questions, questions, reader);
  }
  if (answers > 0) {
    readEntries<kMinRecordSize>(message.answers, answers, reader);
  }
  if (authorities > 0) {
    readEntries<kMinRecordSize>(message.authorities, authorities, reader);
  }
  if (additional > 0) {
    readEntries<kMinRecordSize>(message.additional, additional, reader);
  }
}

template <class Entries>
void writeCount(const Entries& entries, Writer& writer) {
  if (entries.size() > kMaxUInt16) {
    writer.fail(EncodeError::tooManyEntries);
  }
  writer.writeIntegers(static_cast<std::uint16_t>(entries.size()));
}

void writeRecords(const std::vector<RecordValue>& records, Writer& writer) {
  for (const auto& record : records) {
    if (writer.failed()) {
      return;
    }
    record->write(writer);
  }
}

void writeMessage(const Message& message, Writer& writer) {
  writer.writeIntegers(message.id, flagsOf(message));
  writeCount(message.questions, writer);
  writeCount(message.answers, writer);
  writeCount(message.authorities, writer);
  writeCount(message.additional, writer);
  for (const auto& question : message.questions) {
    if (writer.failed()) {
      return;
    }
    question.write(writer);
  }
  writeRecords(message.answers, writer);
  writeRecords(message.authorities, writer);
  writeRecords(message.additional, writer);
}

// Becomes a message where it is wanted; `Message()` would clear all its octets before it sets them.
struct Fresh {
  operator Message() const {
    Message message;
    return message;
  }
};

}  // namespace

tl::expected<Message, DecodeError> Message::deserialize(DataView bytes) {
  if (bytes.size() < kHeaderSize) {
    return tl::unexpected(DecodeError::invalidMessageSize);
  }
  tl::expected<Message, DecodeError> message(tl::in_place, Fresh());
  Reader reader(bytes);
  readMessage(*message, reader);
  if (reader.error()) {
    message = tl::unexpected(*reader.error());
  }
  return message;
}

tl::expected<Message, DecodeError> Message::deserializeTCP(DataView bytes) {
  Reader reader(bytes);
  const auto size = reader.readUInt16();
  const auto message = reader.readBytes(size, DecodeError::invalidMessageSize);
  if (reader.error()) {
    return tl::unexpected(DecodeError::invalidMessageSize);
  }
  return deserialize(message);
}

tl::expected<Data, EncodeError> Message::serialize() const {
  tl::expected<Data, EncodeError> bytes;
  Labels labels = Labels::borrowing();
  Writer writer(*bytes, labels);
  writeMessage(*this, writer);
  if (const auto outcome = writer.finish(); !outcome) {
    bytes = tl::unexpected(outcome.error());
  }
  return bytes;
}

tl::expected<Data, EncodeError> Message::serializeTCP() const {
  auto bytes = serialize();
  if (!bytes) {
    return bytes;
  }
  if (bytes->size() > kMaxUInt16) {
    return tl::unexpected(EncodeError::messageTooLong);
  }
  const auto size = bytes->size();
  bytes->insert(bytes->begin(),
                {static_cast<std::uint8_t>(size >> 8), static_cast<std::uint8_t>(size)});
  return bytes;
}

std::string Message::debugDescription() const {
  std::string out;
  out.reserve(kUsualDescription);
  describe(out);
  return out;
}

void Message::describe(std::string& out) const {
  const auto field = [&out](std::string_view label, const auto& value) {
    out.append(label);
    platform::describe(out, value);
  };
  if (type == MessageType::response) {
    field("DNS Response(id: ", id);
    field(", returnCode: ", returnCode);
  } else {
    field("DNS Request(id: ", id);
  }
  field(", authoritativeAnswer: ", authoritativeAnswer);
  field(", truncation: ", truncation);
  field(", recursionDesired: ", recursionDesired);
  field(", recursionAvailable: ", recursionAvailable);
  field(", questions: ", questions);
  field(", answers: ", answers);
  field(", authorities: ", authorities);
  field(", additional: ", additional);
  out.push_back(')');
}

}  // namespace DnsToolsSocket
