#include "platform/udp/DatagramSlots.h"

#include <cerrno>

#include "platform/base/SystemError.h"

namespace platform {

DatagramSlots::DatagramSlots(std::size_t count)
    : bytes_(new std::uint8_t[count * kSlotSize]), slots_(count), messages_(count), used_(count) {
  received_.reserve(count);
  for (std::size_t slot = 0; slot < count; ++slot) {
    slots_[slot].range = {bytes_.get() + slot * kSlotSize, kSlotSize};
    messages_[slot].msg_hdr.msg_iov = &slots_[slot].range;
    messages_[slot].msg_hdr.msg_iovlen = 1;
    messages_[slot].msg_hdr.msg_name = slots_[slot].client.data();
  }
}

void DatagramSlots::reset(std::size_t slot, bool withInfo) {
  auto& message = messages_[slot].msg_hdr;
  message.msg_namelen = SocketAddress::kMaxSize;
  message.msg_control = nullptr;
  message.msg_controllen = 0;
  if (withInfo) {
    slots_[slot].info.prepareToReceive(message);
  }
}

/// Resets the slots that the last call has changed; all when they held info and now do not, or the
/// other way round.
void DatagramSlots::prepare(bool withInfo) {
  const auto changed = withInfo == hasInfo_ ? used_ : slots_.size();
  for (std::size_t slot = 0; slot < changed; ++slot) {
    reset(slot, withInfo);
  }
  hasInfo_ = withInfo;
  used_ = 0;
  received_.clear();
}

DatagramSlots::Received DatagramSlots::receive(int socket, const SocketAddress& local,
                                               bool tellsInterface) {
  prepare(local.isWildcard() || tellsInterface);
  const auto room = static_cast<unsigned>(messages_.size());
  const int count = ::recvmmsg(socket, messages_.data(), room, MSG_DONTWAIT, nullptr);
  if (count < 0) {
    const bool isNone = errno == EAGAIN || errno == EINTR;
    return isNone ? Received(received_) : tl::make_unexpected(lastError());
  }
  used_ = static_cast<std::size_t>(count);
  for (std::size_t slot = 0; slot < used_; ++slot) {
    received_.push_back(datagram(slot, local, tellsInterface));
  }
  return received_;
}

ReceivedDatagram DatagramSlots::datagram(std::size_t slot, const SocketAddress& local,
                                         bool tellsInterface) {
  auto& [message, size] = messages_[slot];
  const auto& [client, info, range] = slots_[slot];
  const auto* const start = static_cast<const std::uint8_t*>(range.iov_base);
  const auto told = hasInfo_ ? PacketInfo::received(message, local.port()) : std::nullopt;
  return {{client, told && local.isWildcard() ? told->destination : local},
          {start, size},
          told && tellsInterface ? told->interfaceIndex : 0};
}

}  // namespace platform
