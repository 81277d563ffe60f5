#include "platform/flowhost/ClientDatagrams.h"

#include <algorithm>

namespace platform {

// Compared one by one: a read has few, and most differ in their port already.
std::vector<ClientDatagrams> groupedByPath(std::span<const ReceivedDatagram> received) {
  std::vector<ClientDatagrams> groups;
  groups.reserve(received.size());
  for (const auto& datagram : received) {
    auto group = std::find_if(groups.begin(), groups.end(), [&datagram](const auto& known) {
      return known.path == datagram.path && known.interfaceIndex == datagram.interfaceIndex &&
             known.size < ClientDatagrams::kFullSize;
    });
    if (group == groups.end()) {
      group = groups.insert(groups.end(), ClientDatagrams{datagram.path});
      group->interfaceIndex = datagram.interfaceIndex;
    }
    group->datagrams.emplace_back(datagram.bytes.begin(), datagram.bytes.end());
    group->size += datagram.bytes.size();
  }
  return groups;
}

}  // namespace platform
