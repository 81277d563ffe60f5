#include "control_client/WatchProgram.h"

#include <optional>
#include <string>
#include <utility>

#include "control_client/JSONFields.h"
#include "control_client/Output.h"
#include "control_client/Terminal.h"
#include "control_client/WatchLine.h"

namespace quilletctl {

namespace {

using platform::JSONValue;

std::string terminated(const StyledLine& line) {
  return (isOutputColoured() ? line.coloured() : line.plain()) + "\n";
}

/// Empty for a message that is not known.
std::string textOf(const Notification& message, bool asJSON) {
  const bool isQuery = message.method == "query";
  if (!isQuery && message.method != "lost") {
    return "";
  }
  if (asJSON) {
    return jsonLine(message.params);
  }
  return terminated(isQuery
                        ? watchLine(QueryEvent::from(message.params), outputWidth())
                        : watchLost(countOf(message.params, "lost").value_or(0), outputWidth()));
}

/// The next one; what is printed is there to read before it is waited for.
tl::expected<Notification, Failure> next(ControlClient& client) {
  auto message = client.notificationIfThere();
  if (!message) {
    return tl::unexpected(message.error());
  }
  if (*message) {
    return std::move(**message);
  }
  if (auto flushed = flush(); !flushed) {
    return tl::unexpected(flushed.error());
  }
  return client.notification();
}

}  // namespace

tl::expected<void, Failure> runWatch(ControlClient& client, bool asJSON) {
  if (const auto watching = client.call("watch", JSONValue::object()); !watching) {
    return tl::unexpected(watching.error());
  }
  if (!asJSON && isOutputTerminal()) {
    if (auto written = write(terminated(watchHeading(outputWidth()))); !written) {
      return written;
    }
  }
  for (;;) {
    const auto message = next(client);
    if (!message) {
      return tl::unexpected(message.error());
    }
    if (auto written = write(textOf(*message, asJSON)); !written) {
      return written;
    }
  }
}

}  // namespace quilletctl
