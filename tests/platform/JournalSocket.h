#pragma once

#include <memory>
#include <string>

#include "platform/foundation/FileDescriptor.h"

namespace platform::test {

/// Stands where the journal listens, for this process alone: in a mount namespace of its own, which
/// the process enters when the first of these is made and never leaves.
class JournalSocket {
 public:
  /// nullptr when the process may not make a mount namespace.
  static std::unique_ptr<JournalSocket> open();

  JournalSocket(const JournalSocket&) = delete;
  JournalSocket& operator=(const JournalSocket&) = delete;
  ~JournalSocket();

  /// The bytes of the next entry, which has been sent already: a datagram's own, or those of the
  /// file that came with an empty one. Empty when there is none.
  [[nodiscard]] std::string receive() const;

 private:
  JournalSocket() = default;

  FileDescriptor socket_;
};

}  // namespace platform::test
