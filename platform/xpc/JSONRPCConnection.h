#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/base/FileDescriptor.h"
#include "platform/dispatch/WatchedSocket.h"
#include "platform/xpc/JSONRPCService.h"
#include "platform/xpc/LineBuffer.h"

namespace platform {

/// One client of a `JSONRPCServer`. Each line is one JSON-RPC 2.0 message (`JSONRPC.h`), params by
/// name. One that cannot be read, or is longer than `kMaxLine`, is answered with an error; the
/// connection goes on. Inside the event loop only.
///
/// Calls are answered one after another: nothing further is read or done while an answer waits for
/// the client to take it, and of a long text the next piece is made only then. So a client that
/// does not read costs one answer. Once a client has ended its side it is sent the answers to what
/// it has sent, and that is the end.
class JSONRPCConnection final : public std::enable_shared_from_this<JSONRPCConnection>,
                                public JSONRPCSubscriber,
                                private SocketWatcher {
 public:
  /// A line's greatest length, its line feed not counted.
  static constexpr std::size_t kMaxLine = 16UL * 1024;
  /// Octets of notifications that wait for a slow client, beside what the kernel holds.
  static constexpr std::size_t kMaxWaiting = 128UL * 1024;

  class Owner {
   public:
    /// There is something to do: `takeTurn` is to be called, once and later.
    virtual void wantsTurn(const std::shared_ptr<JSONRPCConnection>& connection) = 0;
    virtual void ended(const std::shared_ptr<JSONRPCConnection>& connection) = 0;

   protected:
    ~Owner() = default;
  };

  /// Both outlive what the connection does until `close`.
  JSONRPCConnection(FileDescriptor socket, JSONRPCService& service, Owner& owner);

  void begin();
  /// Does one thing for the client: answers a call, or sends a piece of a long text.
  void takeTurn();
  void notify(std::string_view lines, std::uint64_t count) override;
  /// The owner is not told.
  void close();

  /// When the client last sent something or took something, in nanoseconds of the monotonic clock.
  [[nodiscard]] std::uint64_t lastActivity() const { return lastActivity_; }

 private:
  void socketIsReady(bool canRead, bool canWrite) override;
  void receive();
  void answer(const LineBuffer::Line& line);
  void call(const JSONRPCRequest& request);
  void sendPiece();
  void flush();
  void sendWaiting();
  void tellLoss();
  void goOn();
  void end();

  WatchedSocket socket_;
  JSONRPCService& service_;
  Owner& owner_;
  std::uint64_t lastActivity_;
  LineBuffer lines_{kMaxLine};
  bool mayHaveLine_ = false;               // in `lines_`
  bool hasTurn_ = false;                   // `takeTurn` follows
  bool isEnding_ = false;                  // the client sends no more
  std::string waiting_;                    // for the client to take it
  std::optional<JSONRPCTextSource> text_;  // the rest of the result that is being sent
  std::uint64_t lost_ = 0;                 // notifications
};

}  // namespace platform
