// What decodes, written and decoded again, is the same, and its names stay within the
// budget of a message however they point at each other.

#include "fuzz/Target.h"
#include "fuzz/dnscodec/WritableNames.h"

namespace {

using namespace quillet;

std::optional<DNSMessage> decoded(platform::DataView bytes) {
  DNSMessageDecoder decoder;
  decoder.decodeMessageInBuffer(bytes);
  return std::move(decoder.message);
}

}  // namespace

void quillet::fuzz::run(platform::DataView input) {
  const auto first = decoded(input);
  if (!first) {
    return;
  }
  const auto& [header, questions, answers, authority, additional] = *first;
  require(questions.size() == header.questionCount && answers.size() == header.answerRecordCount);
  require(authority.size() == header.authorityRecordCount);
  require(additional.size() == header.additionalRecordCount);
  std::size_t nameSize = 0;
  test::forEachName(*first, [&](const std::string& name) { nameSize += name.size(); });
  // Each name that costs nothing is a root, which takes an octet of the message.
  require(nameSize <= DecodeBudget::kTotal + input.size());
  const auto written = DNSMessageEncoder::encode(*first);
  if (test::hasWritableNames(*first)) {
    const auto second = decoded(written);
    require(second && header == second->header && DNSMessageEncoder::encode(*second) == written);
  }
}
