#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/Error.h"
#include "platform/networkextension/NWHostEndpoint.h"

namespace platform {

/// What the system knows of the application that a flow is of.
struct NEFlowMetaData {
  std::string sourceAppSigningIdentifier;
};

/// The datagrams of one application's socket, offered to a provider. A flow host makes them; tests
/// bring their own. Shared by reference; it goes away when nobody holds it any more.
///
/// Every completion runs once, later, never inside the call that takes it. Inside the event loop
/// only.
class NEAppProxyUDPFlow {
 public:
  using OpenCompletion = std::function<void(std::optional<Error>)>;
  /// As many endpoints as datagrams; endpoint i is the address that datagram i was sent to.
  using ReadCompletion = std::function<void(std::optional<std::vector<Data>> datagrams,
                                            std::optional<std::vector<NWHostEndpoint>> endpoints,
                                            std::optional<Error>)>;
  using WriteCompletion = std::function<void(std::optional<Error>)>;

  NEAppProxyUDPFlow() = default;
  NEAppProxyUDPFlow(const NEAppProxyUDPFlow&) = delete;
  NEAppProxyUDPFlow& operator=(const NEAppProxyUDPFlow&) = delete;
  virtual ~NEAppProxyUDPFlow() = default;

  /// Takes the flow over; it is read and written after that. `localEndpoint` is the address that
  /// the provider uses for it, the system's choice without one.
  virtual void openWithLocalEndpoint(std::optional<NWHostEndpoint> localEndpoint,
                                     OpenCompletion completion) = 0;

  /// Gives all datagrams that are pending, possibly none.
  virtual void readDatagrams(ReadCompletion completion) = 0;

  /// Sends each datagram to the application, coming from the endpoint of the same index. A write
  /// after closing completes with an error.
  virtual void writeDatagrams(std::vector<Data> datagrams,
                              std::vector<NWHostEndpoint> sentByEndpoints,
                              WriteCompletion completion) = 0;

  /// Ends reading, with the error that the application is told of, if any.
  virtual void closeReadWithError(std::optional<Error> error) = 0;
  /// Ends writing in the same way. Closing both sides releases the flow.
  virtual void closeWriteWithError(std::optional<Error> error) = 0;

  [[nodiscard]] virtual const NEFlowMetaData& metaData() const = 0;
  /// The flow key: a running number of the process, never used twice.
  [[nodiscard]] virtual std::int64_t hash() const = 0;

  // For log texts only.
  [[nodiscard]] virtual bool isBound() const = 0;
  [[nodiscard]] virtual std::optional<std::string> networkInterface() const = 0;
  /// The application's own address.
  [[nodiscard]] virtual std::optional<NWHostEndpoint> localEndpoint() const = 0;
  [[nodiscard]] virtual std::optional<std::string> remoteHostname() const = 0;
  [[nodiscard]] virtual std::string debugDescription() const = 0;
};

}  // namespace platform
