#include "platform/senders/SenderLookup.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace platform {

namespace {

// A redirection may change the client's port, and another socket may have the one that is seen.
SocketPath sentAlong(const SenderQuery& query) {
  auto path = query.path;
  if (query.original) {
    path.client = query.original->client;
    path.destination = query.original->destination;
  }
  return path;
}

}  // namespace

std::shared_ptr<SenderLookup> SenderLookup::start(Depth depth) {
  return std::shared_ptr<SenderLookup>(new SenderLookup(depth));
}

SenderLookup::SenderLookup(Depth depth)
    : cgroups_(CgroupTree::start()),
      processes_(depth == Depth::process ? ProcessSearch::create() : nullptr) {}

std::vector<SenderLookup::Owner> SenderLookup::find(std::span<const SenderQuery> queries) {
  std::vector<SocketPath> paths;
  paths.reserve(queries.size());
  std::transform(queries.begin(), queries.end(), std::back_inserter(paths), sentAlong);
  return table_.exact(paths);
}

void SenderLookup::identify(const SenderQuery& query, const Owner& owner, Completion completion) {
  const bool isHidden =
      !owner && !query.original && query.mayBeRedirected && query.path.transport == Transport::udp;
  if (isHidden && searches_ < kMaxSearches) {
    searchByPort(query.path.client, std::move(completion));
  } else {
    nameOwner(owner, std::move(completion));
  }
}

void SenderLookup::searchByPort(const SocketAddress& client, Completion completion) {
  if (!queue_) {
    queue_ = DispatchQueue::serial();
  }
  ++searches_;
  const auto weak = weak_from_this();
  const auto search =
      Search::within(kMaxWait, [weak, completion = std::move(completion)](const auto& owner) {
        if (const auto self = weak.lock()) {
          self->nameOwner(owner, completion);
        }
      });
  queue_->async([weak, search, client, table = searched_] {
    const auto owner = table->byPort(client);
    DispatchQueue::global().async([weak, search, owner] {
      if (const auto self = weak.lock()) {
        --self->searches_;
        search->complete(owner);
      }
    });
  });
}

void SenderLookup::nameOwner(const std::optional<SocketOwner>& owner, Completion completion) {
  if (!owner) {
    completion(std::nullopt);
  } else if (!owner->cgroup) {
    nameProgram(*owner, nullptr, completion);
  } else {
    cgroups_->find(*owner->cgroup, [weak = weak_from_this(), owner = *owner,
                                    completion = std::move(completion)](const Cgroup* cgroup) {
      if (cgroup != nullptr && cgroup->application) {
        completion(*cgroup->application);
      } else if (const auto self = weak.lock()) {
        self->nameProgram(owner, cgroup, completion);
      }
    });
  }
}

void SenderLookup::nameProgram(const SocketOwner& owner, const Cgroup* cgroup,
                               const Completion& completion) {
  if (!processes_) {
    completion(std::nullopt);
    return;
  }
  processes_->find(owner, cgroup != nullptr ? cgroup->directory : std::filesystem::path(),
                   [completion](const auto& executable) { completion(executable); });
}

}  // namespace platform
