#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/base/Description.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/networkextension/NEAppProxyUDPFlow.h"

namespace quillet::test {

using Endpoint = platform::NWHostEndpoint;
using Failure = std::optional<platform::Error>;

/// A flow whose datagrams, failures and key a test chooses, and that keeps what is done with it.
class FakeFlow final : public platform::NEAppProxyUDPFlow {
 public:
  explicit FakeFlow(std::int64_t key, std::vector<platform::Data> datagrams = {},
                    std::string app = "com.example.app")
      : key_(key), metaData_{std::move(app)} {
    readEndpoints.emplace();
    for (std::size_t i = 0; i < datagrams.size(); ++i) {
      readEndpoints->push_back({"127.0.0.1", std::to_string(5300 + i)});
    }
    toRead = std::move(datagrams);
  }

  // What the flow does.
  std::optional<std::vector<platform::Data>> toRead;
  std::optional<std::vector<Endpoint>> readEndpoints;
  Failure openError;
  Failure readError;
  Failure writeError;

  // What was done with it.
  std::vector<std::optional<Endpoint>> opened;
  int reads = 0;
  std::vector<std::pair<platform::Data, Endpoint>> written;
  std::vector<std::string> closed;

  void openWithLocalEndpoint(std::optional<Endpoint> local, OpenCompletion completion) override {
    opened.push_back(std::move(local));
    later([completion = std::move(completion), error = openError] { completion(error); });
  }
  void readDatagrams(ReadCompletion completion) override {
    ++reads;
    later([completion = std::move(completion), datagrams = toRead, endpoints = readEndpoints,
           error = readError] { completion(datagrams, endpoints, error); });
  }
  void writeDatagrams(std::vector<platform::Data> datagrams, std::vector<Endpoint> sentBy,
                      WriteCompletion completion) override {
    for (std::size_t i = 0; i < datagrams.size(); ++i) {
      written.emplace_back(datagrams[i], sentBy.at(i));
    }
    later([completion = std::move(completion), error = writeError] { completion(error); });
  }
  void closeReadWithError(Failure error) override {
    closed.push_back("read " + platform::description(error));
  }
  void closeWriteWithError(Failure error) override {
    closed.push_back("write " + platform::description(error));
  }

  [[nodiscard]] const platform::NEFlowMetaData& metaData() const override { return metaData_; }
  [[nodiscard]] std::int64_t hash() const override { return key_; }
  [[nodiscard]] bool isBound() const override { return false; }
  [[nodiscard]] std::optional<std::string> networkInterface() const override { return {}; }
  [[nodiscard]] std::optional<Endpoint> localEndpoint() const override {
    return Endpoint{"127.0.0.1", "40000"};
  }
  [[nodiscard]] std::optional<std::string> remoteHostname() const override { return "127.0.0.1"; }
  [[nodiscard]] std::string debugDescription() const override { return "<FakeFlow>"; }

 private:
  static void later(std::function<void()> work) {
    platform::DispatchQueue::global().async(std::move(work));
  }

  const std::int64_t key_;
  const platform::NEFlowMetaData metaData_;
};

}  // namespace quillet::test
