// What decodes, written and decoded again, has the same fields, and its names stay within the
// budget of a message however they point at each other.

#include "dnscodec/DNSLabel.h"
#include "dnscodec/DNSMessage.h"
#include "fuzz/Require.h"
#include "fuzz/dnscodec/WritableNames.h"

namespace {

using namespace quillet;
using fuzz::require;
using Questions = DNSMessage::Questions;
using Records = DNSMessage::Records;

bool isSame(const Questions& left, const Questions& right) {
  return std::ranges::equal(left, right, [](const auto& a, const auto& b) { return *a == *b; });
}

bool isSame(const Records& left, const Records& right) {
  return std::ranges::equal(left, right, [](const auto& a, const auto& b) {
    return a->name == b->name && a->type == b->type && a->resourceClass == b->resourceClass &&
           a->ttl == b->ttl && a->data == b->data;
  });
}

template <class List>
std::size_t nameSize(const List& list) {
  std::size_t size = 0;
  for (const auto& element : list) {
    size += element->name.size();
  }
  return size;
}

void requireBounds(const DNSMessage& message, std::size_t size) {
  const auto& [header, questions, answers, authority, additional] = message;
  require(questions.size() == header.questionCount);
  require(answers.size() == header.answerRecordCount);
  require(authority.size() == header.authorityRecordCount);
  require(additional.size() == header.additionalRecordCount);
  // Each name that costs nothing is a root, which takes an octet of the message.
  require(nameSize(questions) + nameSize(answers) + nameSize(authority) + nameSize(additional) <=
          DecodeBudget::kTotal + size);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  DNSMessageDecoder first;
  first.decodeMessageInBuffer({data, size});
  if (!first.message) {
    return 0;
  }
  requireBounds(*first.message, size);
  const auto written = DNSMessageEncoder::encode(*first.message);
  if (!test::hasWritableNames(*first.message)) {
    return 0;
  }
  DNSMessageDecoder second;
  second.decodeMessageInBuffer(written);
  require(second.message.has_value());
  require(first.message->header == second.message->header);
  require(isSame(first.message->questions, second.message->questions));
  require(isSame(first.message->answers, second.message->answers));
  require(isSame(first.message->authorityRecords, second.message->authorityRecords));
  require(isSame(first.message->additionalRecords, second.message->additionalRecords));
  return 0;
}
