#include "programs/quillet_demo_filter/DemoFilter.h"

#include <poll.h>
#include <unistd.h>

#include <string_view>
#include <utility>

#include "dns_tools/ReturnCode.h"
#include "programs/quillet_demo_filter/DemoAnswer.h"
#include "programs/quillet_demo_filter/QueryLine.h"

namespace quillet {

using DnsToolsSocket::Message;
using DnsToolsSocket::ReturnCode;

DemoFilter::DemoFilter(std::vector<DatagramSocket> sockets, bool isQuiet)
    : sockets_(std::move(sockets)), isQuiet_(isQuiet) {}

void DemoFilter::run(int stopDescriptor) {
  std::vector<pollfd> watched;
  for (const DatagramSocket& socket : sockets_) {
    watched.push_back({socket.descriptor(), POLLIN, 0});
  }
  watched.push_back({stopDescriptor, POLLIN, 0});
  for (;;) {
    if (::poll(watched.data(), watched.size(), -1) < 0) {
      continue;
    }
    if (watched.back().revents != 0) {
      return;
    }
    for (std::size_t i = 0; i < sockets_.size(); ++i) {
      if (watched[i].revents != 0) {
        serveBatch(sockets_[i]);
      }
    }
    printLines();
  }
}

void DemoFilter::serveBatch(DatagramSocket& socket) {
  const std::vector<platform::DataView> datagrams = socket.receive();
  totals_.queries += datagrams.size();
  for (std::size_t i = 0; i < datagrams.size(); ++i) {
    const auto answer = answerFor(datagrams[i]);
    if (!answer) {
      continue;
    }
    if (auto bytes = answer->serialize()) {
      ++(answer->returnCode == ReturnCode::noError ? totals_.answered : totals_.refused);
      socket.answer(i, *std::move(bytes));
    }
  }
  socket.flush();
}

std::optional<Message> DemoFilter::answerFor(platform::DataView datagram) {
  const auto query = Message::deserialize(datagram);
  if (!query) {
    return answerToUndecodable(datagram);
  }
  auto answer = answerTo(*query);
  if (answer && !isQuiet_) {
    appendQueryLine(lines_, *query);
  }
  return answer;
}

void DemoFilter::printLines() {
  std::string_view rest = lines_;
  while (!rest.empty()) {
    const ssize_t written = ::write(STDOUT_FILENO, rest.data(), rest.size());
    if (written <= 0) {
      break;  // nobody reads them
    }
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  lines_.clear();
}

}  // namespace quillet
