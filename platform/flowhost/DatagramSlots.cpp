#include "platform/flowhost/DatagramSlots.h"

#include <cerrno>

namespace platform {

DatagramSlots::DatagramSlots() : bytes_(new std::uint8_t[kSlots * kSlotSize]) {
  received_.reserve(kSlots);
  for (std::size_t slot = 0; slot < kSlots; ++slot) {
    ranges_[slot] = {bytes_.get() + slot * kSlotSize, kSlotSize};
    messages_[slot].msg_hdr.msg_iov = &ranges_[slot];
    messages_[slot].msg_hdr.msg_iovlen = 1;
    messages_[slot].msg_hdr.msg_name = clients_[slot].data();
  }
}

void DatagramSlots::reset(std::size_t slot, bool withInfo) {
  auto& message = messages_[slot].msg_hdr;
  message.msg_namelen = SocketAddress::kMaxSize;
  message.msg_control = nullptr;
  message.msg_controllen = 0;
  if (withInfo) {
    infos_[slot].prepareToReceive(message);
  }
}

DatagramSlots::Received DatagramSlots::receive(int socket, const SocketAddress& local) {
  const bool withInfo = local.isWildcard();
  const auto changed = withInfo == hasInfo_ ? used_ : kSlots;
  for (std::size_t slot = 0; slot < changed; ++slot) {
    reset(slot, withInfo);
  }
  hasInfo_ = withInfo;
  used_ = 0;
  received_.clear();
  const int count = ::recvmmsg(socket, messages_.data(), kSlots, MSG_DONTWAIT, nullptr);
  if (count < 0) {
    if (errno == EAGAIN || errno == EINTR) {
      return received_;
    }
    return tl::make_unexpected(std::error_code(errno, std::generic_category()));
  }
  used_ = static_cast<std::size_t>(count);
  for (std::size_t slot = 0; slot < used_; ++slot) {
    auto& [message, size] = messages_[slot];
    const auto asked = withInfo ? PacketInfo::sentTo(message, local.port()) : local;
    if (asked) {
      const auto* const start = static_cast<const std::uint8_t*>(ranges_[slot].iov_base);
      received_.push_back({{clients_[slot], *asked}, {start, size}});
    }
  }
  return received_;
}

}  // namespace platform
