#include "control_client/Commands.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <tl/expected.hpp>
#include <utility>
#include <vector>

#include "control/ControlPlaces.h"
#include "control_client/ControlClient.h"
#include "control_client/DisplayText.h"
#include "control_client/ExplainText.h"
#include "control_client/Output.h"
#include "control_client/StatusText.h"
#include "control_client/Terminal.h"
#include "control_client/TopProgram.h"
#include "control_client/WatchProgram.h"

namespace quilletctl {

namespace {

using platform::JSONValue;
using Outcome = tl::expected<void, Failure>;

/// Does one command. The result of a method is printed as it came, or as a person reads it.
class Runner {
 public:
  Runner(ControlClient& client, bool asJSON) : client_(client), asJSON_(asJSON) {}

  Outcome operator()(const Status& /*command*/) {
    return print("status", {},
                 [](const JSONValue& result) { return statusText(result, outputWidth()); });
  }
  Outcome operator()(const Explain& command) {
    JSONValue params{{"name", command.name}};
    if (command.application) {
      params["app"] = *command.application;
    }
    return print("explain", std::move(params),
                 [](const JSONValue& result) { return explainText(result, outputWidth()); });
  }
  Outcome operator()(const Watch& /*command*/) { return runWatch(client_, asJSON_); }
  Outcome operator()(const Top& /*command*/) { return runTop(client_); }
  Outcome operator()(const Report& command) {
    auto params = JSONValue::object();
    if (command.seconds) {
      params["seconds"] = *command.seconds;
    }
    if (command.application) {
      params["app"] = *command.application;
    }
    if (command.isDetailed) {
      params["detailed"] = true;
    }
    return print("report", std::move(params), linesOf);
  }
  Outcome operator()(const Bypass& command) {
    return print("bypass", {{"on", command.isOn}}, nothingOf);
  }
  Outcome operator()(const Reload& /*command*/) { return print("reload", {}, nothingOf); }
  Outcome operator()(const Log& command) {
    return print("log", {{"mode", command.mode}}, nothingOf);
  }
  Outcome operator()(const Metrics& /*command*/) { return print("metrics", {}, linesOf); }

 private:
  using Form = std::string (*)(const JSONValue&);

  static std::string linesOf(const JSONValue& result) {
    return result.is_string() ? printableLines(result.get<std::string>()) : "";
  }
  static std::string nothingOf(const JSONValue& /*result*/) { return ""; }

  Outcome print(const char* method, JSONValue params, Form form) {
    const auto result =
        client_.call(method, params.is_null() ? JSONValue::object() : std::move(params));
    if (!result) {
      return tl::unexpected(result.error());
    }
    return write(asJSON_ ? jsonLine(*result) : form(*result));
  }

  ControlClient& client_;
  bool asJSON_;
};

Outcome attempt(const Invocation& invocation) {
  const auto places =
      invocation.socket ? std::vector{*invocation.socket} : quillet::controlPlaces();
  auto connection = ControlConnection::open(places);
  if (!connection) {
    return tl::unexpected(connection.error());
  }
  ControlClient client(std::move(*connection));
  if (auto done = std::visit(Runner(client, invocation.asJSON), invocation.command); !done) {
    return done;
  }
  return flush();
}

}  // namespace

int run(const Invocation& invocation) {
  const auto done = attempt(invocation);
  if (done) {
    return 0;
  }
  std::fprintf(stderr, "quilletctl: %s\n", done.error().text.c_str());
  return done.error().status;
}

}  // namespace quilletctl
