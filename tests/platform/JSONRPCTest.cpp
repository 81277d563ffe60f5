#include <gtest/gtest.h>

#include <string>

#include "platform/xpc/JSONRPC.h"

namespace platform {
namespace {

struct Case {
  std::string line;
  std::string expected;  // method, id and params, or the error's code and id
};

std::string outcome(const std::string& line) {
  const auto request = readJSONRPCRequest(line);
  if (!request) {
    return std::to_string(static_cast<int>(request.error().error)) + " " +
           request.error().id.dump();
  }
  return request->method + " " + (request->id ? request->id->dump() : "none") + " " +
         (request->params ? request->params->dump() : "none");
}

TEST(JSONRPCTest, ReadsOneRequest) {
  const Case cases[] = {
      {R"({"jsonrpc":"2.0","id":1,"method":"m:","params":["a"]})", R"(m: 1 ["a"])"},
      {R"({"params":[],"method":"m","id":"x","jsonrpc":"2.0","more":{}})", R"(m "x" [])"},
      {R"({"jsonrpc":"2.0","method":"m"})", "m none none"},
      {R"({"jsonrpc":"2.0","id":null,"method":"m"})", "m null none"},
      {R"( {"jsonrpc":"2.0","id":1.5,"method":"","params":{}} )"
       "\r",
       " 1.5 {}"},
      {R"({"jsonrpc":"2.0","id":-9223372036854775808,"method":"m"})",
       "m -9223372036854775808 none"},
      // No JSON.
      {"", "-32700 null"},
      {R"({"jsonrpc":"2.0","id":1,"method":"m")", "-32700 null"},
      {"{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"\xff\"}", "-32700 null"},
      {std::string(100'000, '['), "-32700 null"},
      // JSON, but no request.
      {"[]", "-32600 null"},
      {R"([{"jsonrpc":"2.0","id":1,"method":"m"}])", "-32600 null"},
      {"7", "-32600 null"},
      {R"({"id":1,"method":"m"})", "-32600 1"},
      {R"({"jsonrpc":2.0,"id":1,"method":"m"})", "-32600 1"},
      {R"({"jsonrpc":"1.0","id":1,"method":"m"})", "-32600 1"},
      {R"({"jsonrpc":"2.0","id":"x"})", "-32600 \"x\""},
      {R"({"jsonrpc":"2.0","id":1,"method":1})", "-32600 1"},
      {R"({"jsonrpc":"2.0","id":[1],"method":"m"})", "-32600 null"},
      {R"({"jsonrpc":"2.0","id":true,"method":"m"})", "-32600 null"},
  };
  for (const auto& [line, expected] : cases) {
    EXPECT_EQ(outcome(line), expected) << line.substr(0, 80);
  }
}

}  // namespace
}  // namespace platform
