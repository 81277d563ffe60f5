#include "platform/flowhost/ClientDatagrams.h"

#include <algorithm>

namespace platform {

// Compared one by one: a read has few, and most differ in their port already.
std::vector<ClientDatagrams> groupedByPath(std::span<const ReceivedDatagram> received) {
  std::vector<ClientDatagrams> groups;
  groups.reserve(received.size());
  for (const auto& [path, bytes] : received) {
    auto group = std::find_if(groups.begin(), groups.end(), [&path = path](const auto& known) {
      return known.path == path && known.size < ClientDatagrams::kFullSize;
    });
    if (group == groups.end()) {
      group = groups.insert(groups.end(), ClientDatagrams{path, {}, 0, {}});
    }
    group->datagrams.emplace_back(bytes.begin(), bytes.end());
    group->size += bytes.size();
  }
  return groups;
}

}  // namespace platform
