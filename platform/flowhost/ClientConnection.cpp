#include "platform/flowhost/ClientConnection.h"

#include <algorithm>
#include <utility>

#include "platform/base/Clock.h"

namespace platform {

namespace {

double secondsSince(std::uint64_t time) {
  return static_cast<double>(Clock::shared().uptimeNanoseconds() - time) / 1e9;
}

}  // namespace

/// One query on its way: it is over with the first answer, or with its flow.
class ClientConnection::Query final : public AnswerPath {
 public:
  explicit Query(std::shared_ptr<ClientConnection> connection)
      : connection_(std::move(connection)),
        place_(connection_->outstanding_.insert(connection_->outstanding_.end(), this)) {
    ++connection_->all_->count;
  }
  ~Query() override { end(); }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  [[nodiscard]] Transport transport() const override { return Transport::tcp; }
  [[nodiscard]] bool isOpen() const override { return connection_->isOpen(); }
  void send(const DatagramPath& /*path*/, Data datagram,
            const std::shared_ptr<PendingWrite>& write) override {
    connection_->answer(datagram, write);
    end();
  }
  void end() {
    if (!std::exchange(isOver_, true)) {
      connection_->queryIsOver(place_);
    }
  }
  [[nodiscard]] double age() const { return secondsSince(start_); }

 private:
  const std::shared_ptr<ClientConnection> connection_;
  const std::list<Query*>::iterator place_;
  const std::uint64_t start_ = Clock::shared().uptimeNanoseconds();
  bool isOver_ = false;
};

ClientConnection::ClientConnection(ClientDatagrams origin, Offer offer,
                                   std::shared_ptr<OutstandingQueries> all)
    : origin_(std::move(origin)), offer_(std::move(offer)), all_(std::move(all)) {}

void ClientConnection::begin(FileDescriptor socket) {
  stream_.open(std::move(socket), weak_from_this());
  stream_.setReading(true);
}

double ClientConnection::checkTime() {
  if (outstanding_.empty()) {
    const auto left = kIdleSeconds - secondsSince(lastActivity());
    if (left <= 0) {
      close();
    }
    return left;
  }
  while (!outstanding_.empty() && outstanding_.front()->age() >= kPatienceSeconds) {
    outstanding_.front()->end();
  }
  return outstanding_.empty()
             ? kIdleSeconds
             : std::min(kIdleSeconds, kPatienceSeconds - outstanding_.front()->age());
}

void ClientConnection::streamChanged() {
  offerQueries();
  const bool isDone = stream_.hasEnded() && outstanding_.empty() && stream_.waiting() == 0;
  if (stream_.error() || isDone) {
    close();
  } else {
    stream_.setReading(hasRoom());
  }
}

// One that has none outstanding would not be told when others have fewer.
bool ClientConnection::hasRoom() const {
  const bool mayHaveMore = outstanding_.size() < kMaxOutstanding && all_->count < all_->limit;
  return (outstanding_.empty() || mayHaveMore) && stream_.waiting() == 0;
}

void ClientConnection::offerQueries() {
  while (isOpen() && hasRoom()) {
    auto query = stream_.next();
    if (!query) {
      return;
    }
    if (query->empty()) {
      close();
      return;
    }
    auto datagrams = origin_;
    datagrams.size = query->size();
    datagrams.datagrams.push_back(*std::move(query));
    offer_(std::make_shared<Query>(shared_from_this()), std::move(datagrams));
  }
}

void ClientConnection::answer(DataView message, const std::shared_ptr<PendingWrite>& write) {
  if (stream_.waiting() + message.size() > kMaxWaiting) {
    close();
    write->datagramDone(std::make_error_code(std::errc::no_buffer_space));
    return;
  }
  stream_.send(message, [write](std::error_code error) { write->datagramDone(error); });
}

// Later, as the flow's owner is in the middle of something; not at all while the stream tells of
// whatever comes next.
void ClientConnection::queryIsOver(std::list<Query*>::iterator place) {
  outstanding_.erase(place);
  --all_->count;
  if (isOpen() && !stream_.isReading()) {
    DispatchQueue::global().async([weak = weak_from_this()] {
      if (const auto self = weak.lock()) {
        self->streamChanged();
      }
    });
  }
}

}  // namespace platform
