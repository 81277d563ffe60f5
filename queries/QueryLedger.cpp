#include "queries/QueryLedger.h"

#include <algorithm>
#include <utility>

#include "platform/base/Clock.h"
#include "platform/dispatch/RunGuarded.h"
#include "platform/log/NSLog.h"
#include "queries/MessageGlance.h"
#include "queries/QueryLine.h"

namespace quillet {

using platform::Data;
using platform::DataView;

namespace {

constexpr char kSystem[] = "system";

/// Others may never be answered. They are told of like the rest, and are not open until then.
bool hasQuestion(const MessageGlance& glance) { return glance.name.has_value(); }

std::uint64_t now() { return platform::Clock::shared().uptimeNanoseconds(); }

}  // namespace

/// The queries of one flow, and what holds for all of them.
class QueryLedger::Flow final : public platform::FlowActivity,
                                public std::enable_shared_from_this<Flow> {
 public:
  Flow(std::shared_ptr<QueryLedger> ledger, platform::Transport transport,
       std::span<const Data> queries);
  ~Flow() override;
  Flow(const Flow&) = delete;
  Flow& operator=(const Flow&) = delete;

  void offered(const platform::NEFlowMetaData& metaData) override {
    common_.application = metaData.sourceAppSigningIdentifier;
  }
  void declined() override { common_.server = kSystem; }
  void routed(const Route& route);
  std::function<void()> answering(DataView answer) override;
  void giveUp();

 private:
  struct Query {
    MessageGlance glance;
    bool hasAnswer = false;  // on its way to the client at least
    bool isOver = false;
  };

  Query* answeredBy(const MessageGlance& answer);
  void end(Query& query, std::optional<std::uint16_t> rcode);

  const std::shared_ptr<QueryLedger> ledger_;
  const std::list<Flow*>::iterator place_;
  const std::uint64_t arrival_ = now();
  QueryOutcome common_;
  std::vector<Query> queries_;
};

QueryLedger::Flow::Flow(std::shared_ptr<QueryLedger> ledger, platform::Transport transport,
                        std::span<const Data> queries)
    : ledger_(std::move(ledger)), place_(ledger_->flows_.insert(ledger_->flows_.end(), this)) {
  common_.transport = transport;
  queries_.reserve(queries.size());
  for (const auto& query : queries) {
    queries_.push_back({MessageGlance::at(query)});
    ledger_->open_ += hasQuestion(queries_.back().glance) ? 1U : 0U;
  }
}

QueryLedger::Flow::~Flow() {
  giveUp();
  ledger_->flows_.erase(place_);
}

void QueryLedger::Flow::routed(const Route& route) {
  common_.rule = static_cast<int>(route.rule) + 1;
  common_.server = route.server->description();
}

std::function<void()> QueryLedger::Flow::answering(DataView answer) {
  auto* query = answeredBy(MessageGlance::at(answer));
  if (query == nullptr) {
    return [] {};
  }
  query->hasAnswer = true;
  return [self = shared_from_this(), query, rcode = rcodeOf(answer)] { self->end(*query, rcode); };
}

/// That of the same id and question; failing that, as far as these go, the oldest: answers are
/// taken in the order in which they come.
QueryLedger::Flow::Query* QueryLedger::Flow::answeredBy(const MessageGlance& answer) {
  const auto likeness = [&answer](const Query& query) {
    const auto& glance = query.glance;
    const bool sameQuestion = glance.name == answer.name && glance.type == answer.type;
    return query.hasAnswer ? 0 : 1 + 2 * int{glance.id == answer.id} + int{sameQuestion};
  };
  const auto best = std::ranges::max_element(queries_, {}, likeness);
  return best == queries_.end() || best->hasAnswer ? nullptr : &*best;
}

void QueryLedger::Flow::giveUp() {
  for (auto& query : queries_) {
    end(query, std::nullopt);
  }
}

void QueryLedger::Flow::end(Query& query, std::optional<std::uint16_t> rcode) {
  if (std::exchange(query.isOver, true)) {
    return;
  }
  ledger_->open_ -= hasQuestion(query.glance) ? 1U : 0U;
  auto outcome = common_;
  outcome.name = std::move(query.glance.name);
  outcome.type = query.glance.type;
  outcome.rcode = rcode;
  outcome.milliseconds = static_cast<double>(now() - arrival_) / 1e6;
  platform::runGuarded([&] { ledger_->tell(outcome, mode()); });
}

void QueryLedger::routed(const Route& route) {
  if (auto* flow = dynamic_cast<Flow*>(platform::Activity::current().get())) {
    flow->routed(route);
  }
}

void QueryLedger::giveUpAll() {
  for (auto* flow : flows_) {
    flow->giveUp();
  }
}

std::shared_ptr<platform::FlowActivity> QueryLedger::began(platform::Transport transport,
                                                           std::span<const Data> queries) {
  return std::make_shared<Flow>(shared_from_this(), transport, queries);
}

void QueryLedger::tell(const QueryOutcome& outcome, platform::LogMode mode) const {
  if (mode == platform::LogMode::brief) {
    platform::NSLog(QueryLine{outcome});
  }
  for (const auto& observer : observers_) {
    observer(outcome);
  }
}

}  // namespace quillet
