// What one query costs between the client's socket and the provider and back: received, offered as
// a flow, opened, read, answered, closed. The argument is how many clients send at once; their
// sockets' share is counted in.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "platform/dispatch/MainLoop.h"
#include "platform/flowhost/FlowHost.h"
#include "tests/platform/Socket.h"

namespace {

using platform::FlowHost;
using platform::FlowHostOptions;
using platform::MainLoop;
using platform::NEAppProxyUDPFlow;
using platform::NEDNSProxyProvider;
using platform::NEProviderOptions;
using platform::NEProviderStopReason;
using platform::NWHostEndpoint;
using platform::SocketAddress;
using platform::test::UDPSocket;

/// Answers every flow with its own query.
class EchoProvider final : public NEDNSProxyProvider {
 public:
  void startProxy(std::optional<NEProviderOptions> /*options*/,
                  StartCompletion /*completion*/) override {}
  void stopProxy(NEProviderStopReason /*reason*/, StopCompletion /*completion*/) override {}
  void sleep(StopCompletion /*completion*/) override {}
  void wake() override {}

  bool handleNewUDPFlow(const std::shared_ptr<NEAppProxyUDPFlow>& flow,
                        const NWHostEndpoint& /*initialRemoteEndpoint*/) override {
    flow->openWithLocalEndpoint(std::nullopt, [this, flow](const auto&) { read(flow); });
    return true;
  }

  int answered = 0;

 private:
  void read(const std::shared_ptr<NEAppProxyUDPFlow>& flow) {
    flow->readDatagrams([this, flow](auto datagrams, auto endpoints, const auto&) {
      flow->writeDatagrams(*std::move(datagrams), *std::move(endpoints),
                           [this, flow](const auto& error) {
                             flow->closeReadWithError(error);
                             flow->closeWriteWithError(error);
                             ++answered;
                           });
    });
  }
};

void BM_Answer(benchmark::State& state, const char* listen) {
  const auto atOnce = static_cast<std::size_t>(state.range(0));
  EchoProvider provider;
  FlowHostOptions options;
  options.listen = {{listen, "0"}};
  const auto host = FlowHost::bind(options).value();
  host->serve(provider);
  const auto port = static_cast<std::uint16_t>(std::stoi(host->boundEndpoints().at(0).port));
  const auto destination = SocketAddress::parse("127.0.0.1", port).value();
  const std::vector<UDPSocket> clients(atOnce);
  for (auto _ : state) {
    provider.answered = 0;
    for (const auto& client : clients) {
      client.send(std::string(60, 'q'), destination);
    }
    const auto isDone = [&] { return provider.answered == static_cast<int>(atOnce); };
    if (!MainLoop::shared().runUntil(isDone)) {
      state.SkipWithError("answers are missing");
      return;
    }
    for (const auto& client : clients) {
      benchmark::DoNotOptimize(client.receive());
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(atOnce));
}
BENCHMARK_CAPTURE(BM_Answer, address, "127.0.0.1")->Arg(1)->Arg(64);
BENCHMARK_CAPTURE(BM_Answer, wildcard, "0.0.0.0")->Arg(64);

}  // namespace
