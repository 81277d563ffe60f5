#include <sys/un.h>

#include <future>
#include <stdexcept>

#include "platform/xpc/LineBuffer.h"
#include "platform/xpc/NSXPCListener.h"
#include "tests/platform/Test.h"

namespace platform::test {

/// What the service does, one object for each client.
class Service : public NSObject {
 public:
  void wait(const NSXPCReply& reply) {
    reached.set_value();
    opened.get_future().wait();
    count(reply);
  }
  void count(const NSXPCReply& reply) { reply(std::to_string(++calls_)); }
  void stayMute(const NSXPCReply& /*reply*/) {}
  void fail(const std::string& text) { throw std::runtime_error(text); }

  std::promise<void> reached;  // the call that waits
  std::promise<void> opened;   // it may go on

 private:
  int calls_ = 0;
};

class Delegate : public NSXPCListenerDelegate {
 public:
  bool listener(NSXPCListener& /*listener*/, NSXPCConnection& connection) override {
    if (fails) {
      throw std::runtime_error("no thread to be had");
    }
    connection.exportedInterface.add("wait:", &Service::wait)
        .add("count:", &Service::count)
        .add("mute:", &Service::stayMute)
        .add("fail:", &Service::fail);
    accepted.push_back(std::make_shared<Service>());
    connection.exportedObject = accepted.back();
    connection.resume();
    return true;
  }

  std::vector<std::shared_ptr<Service>> accepted;
  bool fails = false;
};

/// A blocking client of the service.
class Client : public Socket {
 public:
  explicit Client(const std::string& path) : Socket(AF_UNIX, SOCK_STREAM) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, path.size());
    const timeval patience{10, 0};  // a failure, not a test that hangs
    set(SOL_SOCKET, SO_RCVTIMEO, patience);
    require(::connect(descriptor(), reinterpret_cast<sockaddr*>(&address), sizeof address));
  }
  void call(const std::string& method, const std::string& params = "") const {
    send(R"({"jsonrpc":"2.0","id":1,"method":")" + method + R"(","params":[)" + params + "]}\n");
  }
  /// The next line; empty at the end.
  [[nodiscard]] std::string line() const {
    std::string line;
    char c = 0;
    ssize_t size = 0;
    while ((size = ::recv(descriptor(), &c, 1, 0)) == 1 && c != '\n') {
      line.push_back(c);
    }
    return size < 0 ? "nothing" : line;
  }
  [[nodiscard]] std::string ask(const std::string& method, const std::string& params = "") const {
    call(method, params);
    return line();
  }
};

const std::string kRequest = "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"count:\"}\n";
const std::string kOne = R"({"id":1,"jsonrpc":"2.0","result":"1"})";
const std::string kTwo = R"({"id":1,"jsonrpc":"2.0","result":"2"})";

class NSXPCListenerTest : public testing::Test {
 protected:
  NSXPCListenerTest() {
    listener_->delegate = delegate_;
    listener_->resume();
  }

  std::unique_ptr<Client> connect() {
    const auto count = delegate_->accepted.size();
    auto client = std::make_unique<Client>(path_);
    EXPECT_TRUE(runUntilSize(delegate_->accepted, count + 1));
    return client;
  }
  std::vector<std::unique_ptr<Client>> connectAsManyAsThereIsRoomFor() {
    std::vector<std::unique_ptr<Client>> clients;
    while (clients.size() < NSXPCListener::kMaxConnections) {
      clients.push_back(connect());
    }
    return clients;
  }

  SharedClock clock_;
  const LogCapture log_;
  const TemporaryDirectory folder_;
  const std::string path_ = folder_.path() / "service";
  const EnvironmentVariable runtime_{"RUNTIME_DIRECTORY", folder_.path().c_str()};
  const std::shared_ptr<Delegate> delegate_ = std::make_shared<Delegate>();
  std::unique_ptr<NSXPCListener> listener_ = std::make_unique<NSXPCListener>("service");
};

TEST_F(NSXPCListenerTest, AnswersACallWithoutAResultWithAnErrorAndTheNextAsUsual) {
  const auto client = connect();
  const std::tuple<const char*, const char*, std::string> rows[] = {
      {"fail:", R"("oh")", R"(-32603,"message":"Internal error"},"id":1)"},
      {"mute:", "", R"(-32603,"message":"Internal error"},"id":1)"},
      {"fail:", "1", R"(-32602,"message":"Invalid params"},"id":1)"},
      {"count:", R"("a")", R"(-32602,"message":"Invalid params"},"id":1)"},
      {"hidden:", "", R"(-32601,"message":"Method not found"},"id":1)"},
      {R"(count:","jsonrpc":")", "", R"(-32600,"message":"Invalid Request"},"id":1)"},
      {"\"", "", R"(-32700,"message":"Parse error"},"id":null)"}};
  for (const auto& [method, params, error] : rows) {
    EXPECT_EQ(client->ask(method, params), R"({"error":{"code":)" + error + R"(,"jsonrpc":"2.0"})");
  }
  client->send(std::string(LineBuffer::kMaxLine + 1, 'x') + "\n");
  EXPECT_THAT(client->line(), HasSubstr("-32700"));
  EXPECT_EQ(client->ask("count:"), kOne);
}

TEST_F(NSXPCListenerTest, LetsAClientGoThatCannotBeServedAndAllAtItsEnd) {
  delegate_->fails = true;
  const Client client(path_);
  ASSERT_TRUE(runUntilSize(log_.records(), 1));
  EXPECT_EQ(client.line(), "") << "the end";
  delegate_->fails = false;
  const auto served = connect();
  EXPECT_EQ(served->ask("count:"), kOne);
  listener_.reset();
  EXPECT_EQ(served->line(), "");
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(NSXPCListenerTest, GivesAFurtherClientThePlaceOfTheOneSilentLongestThatHasBeenServed) {
  const auto clients = connectAsManyAsThereIsRoomFor();
  clients[0]->call("wait:");  // the longest, but it has no answer yet
  delegate_->accepted[0]->reached.get_future().wait();
  clients[1]->send(kRequest + kRequest.substr(0, 9));  // has begun a line
  EXPECT_EQ(clients[1]->line(), kOne);
  for (std::size_t i = 2; i < clients.size(); ++i) {
    clock_.advanceSeconds(0.001);
    EXPECT_EQ(clients[i]->ask("count:"), kOne);
  }
  const auto further = connect();
  EXPECT_EQ(further->ask("count:"), kOne);
  EXPECT_EQ(clients[2]->line(), "");
  EXPECT_EQ(clients[3]->ask("count:"), kTwo);
  clients[1]->send(kRequest.substr(9));
  EXPECT_EQ(clients[1]->line(), kTwo);
  delegate_->accepted[0]->opened.set_value();
  EXPECT_EQ(clients[0]->line(), kOne);
}

TEST_F(NSXPCListenerTest, LetsWhoSendsNothingGoInTheEnd) {
  const auto clients = connectAsManyAsThereIsRoomFor();
  const Client further(path_);
  runReady();
  EXPECT_EQ(delegate_->accepted.size(), clients.size()) << "all places are taken";
  clock_.advanceSeconds(NSXPCListener::kPatienceSeconds + 1);
  EXPECT_TRUE(runUntilSize(delegate_->accepted, clients.size() + 1));
  EXPECT_EQ(further.ask("count:"), kOne);
  EXPECT_EQ(clients[0]->line(), "");
  EXPECT_EQ(clients[1]->ask("count:"), kOne);
}

}  // namespace platform::test
