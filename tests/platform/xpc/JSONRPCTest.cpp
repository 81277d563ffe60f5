#include "platform/xpc/JSONRPC.h"
#include "tests/platform/Test.h"

namespace platform::test {

/// Method, id and params, or the error's code and id.
std::string outcome(const std::string& line) {
  const auto request = readJSONRPCRequest(line);
  return request ? request->method + " " + request->id.value_or("none").dump() + " " +
                       request->params.value_or("none").dump()
                 : std::to_string(static_cast<int>(request.error().error)) + " " +
                       request.error().id.dump();
}

TEST(JSONRPCTest, ReadsOneRequest) {
  expectEach(
      outcome,
      {{R"({"params":["a"],"method":"m:","id":"x","jsonrpc":"2.0","more":{}})", R"(m: "x" ["a"])"},
       {R"({"jsonrpc":"2.0","method":"m"})", R"(m "none" "none")"},
       {R"({"jsonrpc":"2.0","id":null,"method":"m"})", R"(m null "none")"},
       {"{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"\xff\"}", "-32700 null"},
       {R"({"jsonrpc":"2.0","id":1,"method":"m","params":{"a":1e999}})", "-32700 null"},
       {R"([{"jsonrpc":"2.0","id":1,"method":"m"}])", "-32600 null"},
       {R"({"jsonrpc":2.0,"id":1,"method":"m"})", "-32600 1"},
       {R"({"jsonrpc":"2.0","id":"x"})", "-32600 \"x\""},
       {R"({"jsonrpc":"2.0","id":1,"method":1})", "-32600 1"},
       {R"({"jsonrpc":"2.0","id":true,"method":"m"})", "-32600 null"}});
}

}  // namespace platform::test
