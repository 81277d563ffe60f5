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
    count(reply);
  }
  void count(const NSXPCReply& reply) { reply(std::to_string(++calls_)); }
  void stayMute(const NSXPCReply& /*reply*/) {}
  void hear(const std::string& text) {
    if (text == "oh") {
      throw std::runtime_error(text);
    }
  }

 private:
  const std::shared_future<void> gate_;
  int calls_ = 0;
};

class Delegate : public NSXPCListenerDelegate {
 public:
  bool listener(NSXPCListener& /*listener*/, NSXPCConnection& connection) override {
    connection.exportedInterface.add("wait:", &Service::wait)
        .add("count:", &Service::count)
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
  void send(const std::string& line) const {
    const auto text = line + "\n";
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
  [[nodiscard]] std::string ask(const std::string& line) const {
    send(line);
    return this->line();
  }

 private:
  FileDescriptor socket_;
};

std::string callOf(const std::string& method, const std::string& params = "[]") {
  return R"({"jsonrpc":"2.0","id":1,"method":")" + method + R"(","params":)" + params + "}";
}
std::string resultOf(const std::string& result, const std::string& id = "1") {
  return R"({"id":)" + id + R"(,"jsonrpc":"2.0","result":)" + result + "}";
}
std::string errorOf(int code, const std::string& text, const std::string& id = "1") {
  return R"({"error":{"code":)" + std::to_string(code) + R"(,"message":")" + text + R"("},"id":)" +
         id + R"(,"jsonrpc":"2.0"})";
}

const std::string kOne = resultOf(R"("1")");
const std::string kTwo = resultOf(R"("2")");

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

TEST_F(NSXPCListenerTest, AnswersEachLineAlsoWhenAllComeAtOnce) {
  const auto textOfLine = [](std::size_t size) {
    return R"([")" + std::string(size - callOf("hear:", R"([""])").size(), 'x') + R"("])";
  };
  const std::string parseError = errorOf(-32700, "Parse error", "null");
  const std::string noRequest = errorOf(-32600, "Invalid Request", "null");
  const std::string noParams = errorOf(-32602, "Invalid params");
  const std::pair<std::string, std::string> cases[] = {
      {callOf("count:"), kOne},
      {R"({"method":"count:","id":"x","jsonrpc":"2.0","more":{}})"
       "\r",
       resultOf(R"("2")", R"("x")")},
      {callOf("hear:", textOfLine(LineBuffer::kMaxLine)), resultOf("null")},
      {callOf("hear:", textOfLine(LineBuffer::kMaxLine + 1)), parseError},
      {callOf("hidden:"), errorOf(-32601, "Method not found")},
      {callOf("hear:", "[1]"), noParams},
      {callOf("hear:", R"({"text":"a"})"), noParams},
      {callOf("count:", R"(["a"])"), noParams},
      {callOf("hear:", R"(["oh"])"), errorOf(-32603, "Internal error")},
      {callOf("mute:"), errorOf(-32603, "Internal error")},
      {std::string(600'000, ' '), parseError},
      {R"({"jsonrpc":"2.0","id":1,"method":")"
       "\xff\"}",
       parseError},
      {"[" + callOf("count:") + "]", noRequest},
      {R"({"jsonrpc":"2.0","id":true,"method":"count:"})", noRequest},
      {R"({"jsonrpc":2.0,"id":1,"method":"count:"})", errorOf(-32600, "Invalid Request")},
      {R"({"jsonrpc":"2.0","id":1,"method":1})", errorOf(-32600, "Invalid Request")},
      {callOf("count:"), resultOf(R"("3")")},
  };
  const auto client = connect();
  std::string all =
      R"({"jsonrpc":"2.0","method":"count:"})";  // a reply that nobody gets: not called
  for (const auto& [line, expected] : cases) {
    all += "\n" + line;
  }
  client->send(all);
  for (const auto& [line, expected] : cases) {
    EXPECT_EQ(client->line(), expected) << line.substr(0, 80);
  }
}

TEST_F(NSXPCListenerTest, AClientThatCannotBeServedIsLetGo) {
  delegate_->fails = true;
  const Client client((folder_.path() / "service").string());
  ASSERT_TRUE(MainLoop::shared().runUntil([&] { return !log_.records().empty(); }));
  EXPECT_EQ(client.line(), "") << "the end";
  delegate_->fails = false;
  EXPECT_EQ(connect()->ask(callOf("count:")), kOne);
}

TEST_F(NSXPCListenerTest, AFurtherClientTakesThePlaceOfTheOneSilentLongest) {
  std::vector<std::unique_ptr<Client>> clients;
  for (std::size_t i = 0; i < NSXPCListener::kMaxConnections; ++i) {
    clients.push_back(connect());
  }
  EXPECT_EQ(clients[0]->ask(callOf("count:")), kOne);
  EXPECT_EQ(clients[1]->ask(callOf("count:")), kOne);
  clients[1]->send(callOf("wait:"));
  const auto further = connect();
  EXPECT_EQ(further->ask(callOf("count:")), kOne);
  EXPECT_EQ(clients[2]->line(), "");
  EXPECT_EQ(clients[0]->ask(callOf("count:")), kTwo);
  delegate_->gate.set_value();
  EXPECT_EQ(clients[1]->line(), kTwo);
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
