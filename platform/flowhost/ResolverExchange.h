#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/log/Activity.h"
#include "platform/network/NWError.h"
#include "platform/networkextension/NEAppProxyUDPFlow.h"

namespace platform {

/// One flow answered from one server, over a connection of its own. Answers are matched in the
/// order in which they come. Ends, with both sides of the flow closed, when there are as many
/// answers as datagrams, and at the first error. Inside the event loop only.
class ResolverExchange : public std::enable_shared_from_this<ResolverExchange> {
 public:
  ResolverExchange(const ResolverExchange&) = delete;
  ResolverExchange& operator=(const ResolverExchange&) = delete;
  virtual ~ResolverExchange() = default;

  /// Called once.
  virtual void begin();
  void end(const std::optional<Error>& error);

 protected:
  explicit ResolverExchange(std::shared_ptr<NEAppProxyUDPFlow> flow) : flow_(std::move(flow)) {}

  /// Connects to the server and sends it the queries, one at least.
  virtual void send(std::vector<Data> queries) = 0;
  virtual void disconnect() = 0;

  /// Writes the answer to the oldest query that has none into the flow.
  void answered(Data answer);
  [[nodiscard]] bool isAnswered() const { return answers_ == endpoints_.size(); }
  void fail(const NWError& error);

 private:
  const Activity::Ref activity_ = Activity::current();  // lasts as long as this
  const std::shared_ptr<NEAppProxyUDPFlow> flow_;
  std::vector<NWHostEndpoint> endpoints_;  // of the queries
  std::size_t answers_ = 0;
  bool isOver_ = false;
};

}  // namespace platform
