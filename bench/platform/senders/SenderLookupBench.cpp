// What it costs to know whose a datagram is: the kernel's lookup of the client's socket, by its two
// ends or by its port, and the name of its cgroup; on a machine with that many UDP sockets and,
// where they may be made, 300 cgroups besides those that are there.

#include <benchmark/benchmark.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "platform/base/DescriptorLimit.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/senders/SenderLookup.h"
#include "tests/platform/Socket.h"
#include "tests/platform/senders/TestCgroup.h"

namespace {

using platform::CgroupNames;
using platform::CgroupTree;
using platform::MainLoop;
using platform::SenderLookup;
using platform::SocketAddress;
using platform::SocketTable;
using platform::Transport;
using platform::test::TestCgroup;
using platform::test::UDPSocket;

constexpr int kCgroups = 300;

/// As many bound sockets as the benchmark's argument says; absent where the system permits fewer.
std::vector<UDPSocket> manySockets(benchmark::State& state) {
  platform::raiseDescriptorLimit(std::numeric_limits<std::size_t>::max());
  std::vector<UDPSocket> sockets;
  try {
    while (sockets.size() < static_cast<std::size_t>(state.range(0))) {
      sockets.emplace_back();
    }
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
  }
  return sockets;
}

std::vector<std::unique_ptr<TestCgroup>> manyCgroups() {
  std::vector<std::unique_ptr<TestCgroup>> cgroups;
  for (int i = 0; i < kCgroups; ++i) {
    if (auto made = TestCgroup::create("app.slice/app-gnome-a" + std::to_string(i) + "-1.scope")) {
      cgroups.push_back(std::move(made));
    }
  }
  return cgroups;
}

platform::SocketPath pathFrom(const UDPSocket& client) {
  return {Transport::udp, SocketAddress::parse("127.0.0.1", client.port()).value(),
          SocketAddress::parse("127.0.0.1", 53).value(), 1};
}

void BM_Exact(benchmark::State& state) {
  const auto sockets = manySockets(state);
  SocketTable table;
  std::size_t next = 0;
  for (auto _ : state) {
    const auto owner = table.exact(pathFrom(sockets[next++ % sockets.size()]));
    if (!owner) {
      state.SkipWithError("a socket is not found");
    }
  }
}
BENCHMARK(BM_Exact)->Arg(10)->Arg(1000)->Arg(10'000);

void BM_ByPort(benchmark::State& state) {
  const auto sockets = manySockets(state);
  SocketTable table;
  for (auto _ : state) {
    benchmark::DoNotOptimize(table.byPort(pathFrom(sockets.front()).client));
  }
}
BENCHMARK(BM_ByPort)->Arg(10)->Arg(1000)->Arg(10'000);

void BM_KnownCgroup(benchmark::State& state) {
  const auto cgroups = manyCgroups();
  if (cgroups.empty()) {
    state.SkipWithError("no cgroups of version 2 to be made here");
    return;
  }
  const auto tree = CgroupTree::start();
  bool isKnown = false;
  const auto id = cgroups.front()->id();
  tree->find(id, [&](const auto* cgroup) { isKnown = cgroup != nullptr; });
  MainLoop::shared().runUntil([&] { return isKnown; });
  for (auto _ : state) {
    tree->find(id, [&](const auto* cgroup) { isKnown = cgroup != nullptr && cgroup->application; });
    benchmark::DoNotOptimize(isKnown);
  }
}
BENCHMARK(BM_KnownCgroup);

void BM_Walk(benchmark::State& state) {
  const auto cgroups = manyCgroups();
  for (auto _ : state) {
    benchmark::DoNotOptimize(CgroupNames::walk());
  }
}
BENCHMARK(BM_Walk);

/// Both together, as a flow has them.
void BM_Identify(benchmark::State& state) {
  const auto cgroups = manyCgroups();
  if (cgroups.empty()) {
    state.SkipWithError("no cgroups of version 2 to be made here");
    return;
  }
  const auto client = cgroups.back()->inside([] { return UDPSocket(); });
  const auto lookup = SenderLookup::start(SenderLookup::Depth::cgroup);
  bool isKnown = false;
  const auto identify = [&] {
    lookup->identify({pathFrom(client), std::nullopt, false},
                     [&](auto application) { isKnown = application.has_value(); });
  };
  identify();
  MainLoop::shared().runUntil([&] { return isKnown; });
  for (auto _ : state) {
    identify();
    benchmark::DoNotOptimize(isKnown);
  }
}
BENCHMARK(BM_Identify);

}  // namespace
