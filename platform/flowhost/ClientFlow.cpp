#include "platform/flowhost/ClientFlow.h"

#include <algorithm>
#include <utility>

#include "platform/base/Description.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/flowhost/HostEndpoint.h"
#include "platform/flowhost/PendingWrite.h"

namespace platform {

namespace {

std::int64_t nextHash() {
  static std::int64_t last = 0;
  return ++last;
}

Error closedError() { return Error("the flow is closed"); }

void later(std::function<void()> work) { DispatchQueue::global().async(std::move(work)); }

}  // namespace

ClientFlow::ClientFlow(std::shared_ptr<AnswerPath> answers, ClientDatagrams received,
                       std::shared_ptr<const NEFlowMetaData> metaData)
    : answers_(std::move(answers)),
      path_(received.path),
      remoteEndpoint_(endpointFrom(received.server())),
      datagrams_(std::move(received.datagrams)),
      datagramCount_(datagrams_.size()),
      metaData_(std::move(metaData)),
      hash_(nextHash()) {}

void ClientFlow::observe(const std::shared_ptr<FlowActivity>& activity) {
  activity_ = activity;
  if (activity) {
    activity->offered(metaData());
  }
}

void ClientFlow::openWithLocalEndpoint(std::optional<NWHostEndpoint> /*localEndpoint*/,
                                       OpenCompletion completion) {
  later([completion = std::move(completion)] { completion(std::nullopt); });
}

void ClientFlow::readDatagrams(ReadCompletion completion) {
  if (isReadClosed_) {
    later([completion = std::move(completion)] {
      completion(std::nullopt, std::nullopt, closedError());
    });
    return;
  }
  std::vector<NWHostEndpoint> endpoints(datagrams_.size(), remoteEndpoint_);
  later([completion = std::move(completion), datagrams = std::exchange(datagrams_, {}),
         endpoints = std::move(endpoints)]() mutable {
    completion(std::move(datagrams), std::move(endpoints), std::nullopt);
  });
}

void ClientFlow::writeDatagrams(std::vector<Data> datagrams,
                                std::vector<NWHostEndpoint> sentByEndpoints,
                                WriteCompletion completion) {
  auto refusal = objection(datagrams, sentByEndpoints);
  if (refusal || datagrams.empty()) {
    later([completion = std::move(completion), refusal = std::move(refusal)] {
      completion(refusal);
    });
    return;
  }
  const auto write =
      std::make_shared<PendingWrite>(datagrams.size(), observed(datagrams, std::move(completion)));
  for (auto& datagram : datagrams) {
    answers_->send(path_, std::move(datagram), write);
  }
}

/// The completion as a part of the activity, which is told of the answers first when all were sent.
NEAppProxyUDPFlow::WriteCompletion ClientFlow::observed(const std::vector<Data>& answers,
                                                        WriteCompletion completion) const {
  const auto activity = activity_.lock();
  if (!activity) {
    return completion;
  }
  std::vector<std::function<void()>> sent;
  sent.reserve(answers.size());
  for (const auto& answer : answers) {
    sent.push_back(activity->answering(answer));
  }
  return [activity, sent = std::move(sent),
          completion = std::move(completion)](const std::optional<Error>& error) {
    const ActivityScope scope(activity);
    for (const auto& tell : sent) {
      if (!error) {
        tell();
      }
    }
    completion(error);
  };
}

std::optional<Error> ClientFlow::objection(
    const std::vector<Data>& datagrams, const std::vector<NWHostEndpoint>& sentByEndpoints) const {
  if (isWriteClosed_ || !answers_->isOpen()) {
    return closedError();
  }
  if (datagrams.size() != sentByEndpoints.size()) {
    return Error("as many endpoints as datagrams are needed");
  }
  for (const auto& endpoint : sentByEndpoints) {
    if (endpoint != remoteEndpoint_) {
      return Error("the client has not asked " + description(endpoint));
    }
  }
  return std::nullopt;
}

void ClientFlow::closeReadWithError(std::optional<Error> /*error*/) {
  isReadClosed_ = true;
  datagrams_ = {};
  releaseWhenClosed();
}

// A client is told of no error.
void ClientFlow::closeWriteWithError(std::optional<Error> /*error*/) {
  isWriteClosed_ = true;
  releaseWhenClosed();
}

void ClientFlow::releaseWhenClosed() {
  if (isReadClosed_ && isWriteClosed_) {
    answers_.reset();
  }
}

std::optional<NWHostEndpoint> ClientFlow::localEndpoint() const {
  return endpointFrom(path_.client);
}

std::optional<std::string> ClientFlow::remoteHostname() const { return remoteEndpoint_.hostname; }

std::string ClientFlow::debugDescription() const {
  std::string out = "<NEAppProxyUDPFlow: ";
  describe(out, hash_);
  out.append(", ");
  describe(out, endpointFrom(path_.client));
  out.append(" -> ");
  describe(out, remoteEndpoint_);
  out.append(", ");
  describe(out, datagramCount_);
  out.append(" datagrams>");
  return out;
}

}  // namespace platform
