#include "dns_tools/Question.h"

#include <utility>

#include "dns_tools/ClassWord.h"
#include "dns_tools/Reader.h"
#include "dns_tools/StructureText.h"
#include "dns_tools/Writer.h"

namespace DnsToolsSocket {

namespace {

constexpr std::size_t kTypeAndClassSize = 4;

}  // namespace

Question Question::read(Reader& reader) {
  Question question{.name = reader.readName()};
  if (reader.remaining() < kTypeAndClassSize) {
    reader.fail(DecodeError::invalidQuestion);
  }
  question.type = reader.readUInt16();
  const ClassWord word(reader.readUInt16());
  question.unique = word.unique();
  question.internetClass = word.internetClass();
  return question;
}

void Question::write(Writer& writer) const {
  writer.writeName(name);
  writer.writeIntegers(type, internetClass);
}

void Question::describe(std::string& out) const {
  StructureText(out, "Question")
      .field("name", name)
      .field("type", type)
      .field("unique", unique)
      .field("internetClass", internetClass);
}

}  // namespace DnsToolsSocket
