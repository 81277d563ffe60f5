// The lines of a stream are the same in whatever pieces it comes. A line that is a request names a
// method and an id that may be echoed; whatever is answered is one line that is JSON again, with
// the id that was given.

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/Target.h"
#include "platform/store/JSONDocument.h"
#include "platform/xpc/JSONRPC.h"
#include "platform/xpc/LineBuffer.h"

namespace quillet::fuzz {

using platform::JSONRPCError;

std::vector<std::string> linesOf(std::string_view bytes, std::size_t step) {
  platform::LineBuffer buffer;
  std::vector<std::string> lines;
  for (; !bytes.empty(); bytes.remove_prefix(std::min(step, bytes.size()))) {
    buffer.append(bytes.substr(0, step));
    while (const auto line = buffer.next()) {
      lines.push_back(line->isTooLong ? "\n" : line->text);
    }
  }
  return lines;
}

void checkAnswer(const std::string& answer, const platform::JSONValue& id) {
  require(answer.find('\n') == answer.size() - 1);
  const auto json = platform::parseJSON(answer);
  require(json && json->value.at("jsonrpc") == "2.0" && json->value.at("id") == id);
}

void run(platform::DataView input) {
  const auto bytes = platform::textOf(input);
  const auto lines = linesOf(bytes, bytes.size());
  require(lines == linesOf(bytes, 1) && lines == linesOf(bytes, 7));
  for (const auto& line : lines) {
    if (const auto request = platform::readJSONRPCRequest(line)) {
      const auto id = request->id.value_or(nullptr);
      checkAnswer(platform::jsonRPCResultLine(id, request->method), id);
    } else {
      const auto& [id, error] = request.error();
      require(error == JSONRPCError::kParseError || error == JSONRPCError::kInvalidRequest);
      checkAnswer(platform::jsonRPCErrorLine(id, {error}), id);
    }
  }
}

}  // namespace quillet::fuzz
