#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <future>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/dispatch/MainLoop.h"
#include "platform/xpc/NSXPCListener.h"
#include "tests/platform/EnvironmentVariable.h"
#include "tests/platform/TemporaryDirectory.h"
#include "tests/support/LogCapture.h"

namespace platform {
namespace {

/// What the service does, one object for each client.
class Service : public NSObject {
 public:
  explicit Service(std::shared_future<void> gate) : gate_(std::move(gate)) {}
  void wait(const NSXPCReply& reply) {
    gate_.wait();
    reply("waited");
  }
  void count(const NSXPCReply& reply) { reply(std::to_string(++calls_)); }
  void fail(const std::string& text) { throw std::runtime_error(text); }
  void stayMute(const NSXPCReply& /*reply*/) {}
  void hear(const std::string& /*text*/) {}

 private:
  const std::shared_future<void> gate_;
  int calls_ = 0;
};

class Delegate : public NSXPCListenerDelegate {
 public:
  bool listener(NSXPCListener& /*listener*/, NSXPCConnection& connection) override {
    connection.exportedInterface.add("wait:", &Service::wait)
        .add("count:", &Service::count)
        .add("fail:", &Service::fail)
        .add("mute:", &Service::stayMute)
        .add("hear:", &Service::hear);
    connection.exportedObject = std::make_shared<Service>(opened);
    if (fails) {
      throw std::runtime_error("no thread to be had");
    }
    connection.resume();
    ++accepted;
    return true;
  }

  std::promise<void> gate;  // what `Service::wait` waits for
  std::shared_future<void> opened = gate.get_future().share();
  std::size_t accepted = 0;
  bool fails = false;
};

/// A blocking client of the service.
class Client {
 public:
  explicit Client(const std::string& path)
      : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, path.size());
    EXPECT_EQ(::connect(socket_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  }
  void send(const std::string& text) const {
    EXPECT_EQ(::send(socket_.get(), text.data(), text.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(text.size()));
  }
  /// The next line; empty at the end.
  [[nodiscard]] std::string line() const {
    std::string line;
    for (char c = 0; ::recv(socket_.get(), &c, 1, 0) == 1 && c != '\n';) {
      line.push_back(c);
    }
    return line;
  }
  [[nodiscard]] std::string ask(const std::string& text) const {
    send(text + "\n");
    return line();
  }

 private:
  FileDescriptor socket_;
};

std::string callOf(const std::string& method, const std::string& params = "[]") {
  return R"({"jsonrpc":"2.0","id":1,"method":")" + method + R"(","params":)" + params + "}";
}

constexpr char kOne[] = R"({"id":1,"jsonrpc":"2.0","result":"1"})";

class NSXPCListenerTest : public testing::Test {
 protected:
  NSXPCListenerTest() {
    listener_->delegate = delegate_;
    listener_->resume();
  }

  std::unique_ptr<Client> connect() {
    const auto count = delegate_->accepted;
    auto client = std::make_unique<Client>((folder_.path() / "service").string());
    EXPECT_TRUE(MainLoop::shared().runUntil([&] { return delegate_->accepted > count; }));
    return client;
  }

  const quillet::test::LogCapture log_;
  const test::TemporaryDirectory folder_;
  const test::EnvironmentVariable runtime_{"RUNTIME_DIRECTORY", folder_.path().c_str()};
  const std::shared_ptr<Delegate> delegate_ = std::make_shared<Delegate>();
  std::unique_ptr<NSXPCListener> listener_ = std::make_unique<NSXPCListener>("service");
};

TEST_F(NSXPCListenerTest, AReplyThatNobodyGetsIsNotAskedFor) {
  const auto client = connect();
  client->send(R"({"jsonrpc":"2.0","method":"count:"})"
               "\n");
  EXPECT_EQ(client->ask(callOf("count:")), kOne);
}

TEST_F(NSXPCListenerTest, AClientThatCannotBeServedIsLetGo) {
  delegate_->fails = true;
  const Client client((folder_.path() / "service").string());
  ASSERT_TRUE(MainLoop::shared().runUntil([&] { return !log_.records().empty(); }));
  EXPECT_EQ(client.line(), "") << "the end";
  delegate_->fails = false;
  EXPECT_EQ(connect()->ask(callOf("count:")), kOne);
}

TEST_F(NSXPCListenerTest, AnswersEachLine) {
  const auto error = [](int code, const char* text, const char* id = "1") {
    return R"({"error":{"code":)" + std::to_string(code) + R"(,"message":")" + text +
           R"("},"id":)" + id + R"(,"jsonrpc":"2.0"})";
  };
  const std::pair<std::string, std::string> cases[] = {
      {callOf("count:"), kOne},
      {R"({"jsonrpc":"2.0","id":"x","method":"count:"})",
       R"({"id":"x","jsonrpc":"2.0","result":"2"})"},
      {callOf("hear:", R"(["a"])"), R"({"id":1,"jsonrpc":"2.0","result":null})"},
      {callOf("hidden:"), error(-32601, "Method not found")},
      {callOf("count"), error(-32601, "Method not found")},
      {callOf("hear:"), error(-32602, "Invalid params")},
      {callOf("hear:", "[1]"), error(-32602, "Invalid params")},
      {callOf("hear:", R"(["a","b"])"), error(-32602, "Invalid params")},
      {callOf("hear:", R"({"text":"a"})"), error(-32602, "Invalid params")},
      {callOf("count:", R"(["a"])"), error(-32602, "Invalid params")},
      {callOf("count:", "null"), error(-32602, "Invalid params")},
      {callOf("fail:", R"(["oh"])"), error(-32603, "Internal error")},
      {callOf("mute:"), error(-32603, "Internal error")},
      {"garbage", error(-32700, "Parse error", "null")},
      {std::string(LineBuffer::kMaxLine + 1, ' '), error(-32700, "Parse error", "null")},
      {"[]", error(-32600, "Invalid Request", "null")},
      {callOf("count:"), R"({"id":1,"jsonrpc":"2.0","result":"3"})"},
  };
  const auto client = connect();
  for (const auto& [line, expected] : cases) {
    EXPECT_EQ(client->ask(line), expected) << line.substr(0, 80);
  }
}

TEST_F(NSXPCListenerTest, ACallThatTakesItsTimeDelaysNoOtherClient) {
  const auto slow = connect();
  slow->send(callOf("wait:") + "\n" + callOf("count:") + "\n");
  const auto other = connect();
  EXPECT_EQ(other->ask(callOf("count:")), kOne) << "an object of its own";
  delegate_->gate.set_value();
  EXPECT_EQ(slow->line(), R"({"id":1,"jsonrpc":"2.0","result":"waited"})");
  EXPECT_EQ(slow->line(), kOne);
}

TEST_F(NSXPCListenerTest, AFurtherClientTakesThePlaceOfTheOneSilentLongest) {
  std::vector<std::unique_ptr<Client>> clients;
  for (std::size_t i = 0; i < NSXPCListener::kMaxConnections; ++i) {
    clients.push_back(connect());
  }
  EXPECT_EQ(clients[0]->ask(callOf("count:")), kOne);
  EXPECT_EQ(clients[1]->ask(callOf("count:")), kOne);
  clients[1]->send(callOf("wait:") + "\n");
  const auto further = connect();
  EXPECT_EQ(further->ask(callOf("count:")), kOne);
  EXPECT_EQ(clients[2]->line(), "");
  EXPECT_EQ(clients[0]->ask(callOf("count:")), R"({"id":1,"jsonrpc":"2.0","result":"2"})");
  delegate_->gate.set_value();
  EXPECT_EQ(clients[1]->line(), R"({"id":1,"jsonrpc":"2.0","result":"waited"})");
}

TEST_F(NSXPCListenerTest, EndsItsConnections) {
  const auto client = connect();
  listener_.reset();
  EXPECT_EQ(client->line(), "");
  MainLoop::shared().runReady();
  EXPECT_FALSE(std::filesystem::exists(folder_.path() / "service"));
}

}  // namespace
}  // namespace platform
