// What the log records of one DNS query cost: about 40 of 30 to 300 bytes and one with the query in
// hex.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/log/LogSink.h"
#include "platform/log/NSLog.h"
#include "platform/log/StreamLogSink.h"

namespace {

using platform::NSLog;

constexpr int kRecordsPerQuery = 41;

/// Puts a sink on `descriptor` in use and owns the descriptor; afterwards that of standard error.
class SinkOn {
 public:
  explicit SinkOn(int descriptor) : descriptor_(descriptor) {
    platform::LogSink::setShared(
        std::make_unique<platform::StreamLogSink>(descriptor, "quillet-dns-proxy"));
  }
  ~SinkOn() {
    platform::LogSink::setShared(nullptr);
    ::close(descriptor_);
  }
  SinkOn(const SinkOn&) = delete;
  SinkOn& operator=(const SinkOn&) = delete;

 private:
  const int descriptor_;
};

int openNull() { return ::open("/dev/null", O_WRONLY | O_CLOEXEC); }

/// A file in the temporary directory that has no name any more.
int openFile() {
  char path[] = "/tmp/NSLogBench.XXXXXX";
  const int descriptor = ::mkostemp(path, O_CLOEXEC | O_APPEND);
  ::unlink(path);
  return descriptor;
}

struct Query {
  std::int64_t flow = 1234567;
  std::string name = "www.an-ordinary-name.example.com.";
  std::string hex = std::string(700, 'a');
  std::optional<std::string> application{"com.example.browser.helper"};
  std::map<std::string, std::string> values{{"65001", "5f3c9a7e-organization"},
                                            {"65003", "user.name@example.com"},
                                            {"65004", "127.0.0.1"},
                                            {"65006", "Europe/Ljubljana"},
                                            {"65007", "1"}};
  std::vector<std::string> endpoints{"127.0.0.1:53321", "127.0.0.1:53322"};
};

void writeRecords(const Query& query) {
  for (int i = 0; i < (kRecordsPerQuery - 5) / 4; ++i) {
    NSLog("flow ", query.flow, ", datagram count = ", i);
    NSLog("[DnsProxyExt] flow ", query.flow, ", application: ", query.application,
          ", isFinished: ", false, ", time from start = ", 0.1234);
    NSLog("question: ", query.name, ", type A, class IN, flow ", query.flow,
          ", server 127.0.0.2:81");
    NSLog("connection state is ready, flow ", query.flow);
  }
  NSLog("values for injection: ", query.values);
  NSLog("configuration = ", std::optional(query.values));
  NSLog("endpoints: ", query.endpoints);
  NSLog("raw: ", query.hex);
  NSLog("-> end of flow ", query.flow);
}

void runQueries(benchmark::State& state, int descriptor) {
  const SinkOn sink(descriptor);
  const Query query;
  for ([[maybe_unused]] const auto _ : state) {
    const platform::LogBatch batch;
    writeRecords(query);
    if (::lseek(descriptor, 0, SEEK_CUR) > (64 << 20)) {
      state.PauseTiming();
      benchmark::DoNotOptimize(::ftruncate(descriptor, 0));
      state.ResumeTiming();
    }
  }
  state.SetItemsProcessed(state.iterations() * kRecordsPerQuery);
}

void BM_QueryRecordsToNull(benchmark::State& state) { runQueries(state, openNull()); }
BENCHMARK(BM_QueryRecordsToNull);

void BM_QueryRecordsToFile(benchmark::State& state) { runQueries(state, openFile()); }
BENCHMARK(BM_QueryRecordsToFile);

/// One record of `range` plain bytes, within a batch that does not end.
void BM_PlainRecord(benchmark::State& state) {
  const SinkOn sink(openNull());
  const std::string text(static_cast<std::size_t>(state.range(0)), 'x');
  const platform::LogBatch batch;
  for ([[maybe_unused]] const auto _ : state) {
    NSLog(text);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PlainRecord)->Arg(30)->Arg(300)->Arg(700);

/// The same with one byte to be escaped at the end.
void BM_EscapedRecord(benchmark::State& state) {
  const SinkOn sink(openNull());
  const std::string text = std::string(static_cast<std::size_t>(state.range(0) - 1), 'x') + '\n';
  const platform::LogBatch batch;
  for ([[maybe_unused]] const auto _ : state) {
    NSLog(text);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_EscapedRecord)->Arg(30)->Arg(300)->Arg(700);

}  // namespace
