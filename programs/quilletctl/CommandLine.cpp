#include "programs/quilletctl/CommandLine.h"

#include <DeploymentValues.h>

#include <CLI/CLI.hpp>
#include <limits>
#include <string>

#include "control_client/Failure.h"
#include "platform/base/Utf8.h"
#include "platform/base/WholeNumber.h"

namespace quilletctl {

namespace {

/// What the options of all commands are read into.
struct Texts {
  Explain explain;
  Report report;
  std::string seconds;
  std::string bypass;
  std::string log;
};

std::string checkText(const std::string& text) {
  return text.empty() || !platform::isValidUtf8(text) ? "needs a text in UTF-8" : "";
}

/// What the proxy counts in: 63 bits.
std::string checkSeconds(const std::string& text) {
  const auto number = platform::wholeNumber<std::int64_t>(text);
  return number && *number >= 0 ? "" : "is no number of seconds";
}

void addApplication(CLI::App& command, std::optional<std::string>& value, const char* type,
                    const char* help) {
  command.add_option("--app", value, help)->type_name(type)->check(checkText);
}

CLI::App* addCommand(CLI::App& app, const char* name, const char* help) {
  return app.add_subcommand(name, help)->group("Commands")->fallthrough();
}

void addExplain(CLI::App& app, Explain& explain) {
  auto& command = *addCommand(app, "explain", "What rule a query would meet, and why");
  command.add_option("NAME", explain.name, "The name that is asked for")
      ->type_name("")
      ->required()
      ->check(checkText);
  addApplication(command, explain.application, "ID", "The application that asks for it");
}

void addReport(CLI::App& app, Texts& texts) {
  auto& command = *addCommand(app, "report", "The proxy's report of its flows");
  command.add_option("--seconds", texts.seconds, "Only flows of the last N seconds")
      ->type_name("N")
      ->check(checkSeconds);
  addApplication(command, texts.report.application, "TEXT",
                 "Only flows of applications that hold this text");
  command.add_flag("--detailed", texts.report.isDetailed, "All that is known of each flow");
}

void addChoice(CLI::App& app, const char* name, const char* help, std::string& value,
               const char* first, const char* second) {
  const auto check = [first, second](const std::string& text) {
    return text == first || text == second ? std::string()
                                           : "needs " + std::string(first) + " or " + second;
  };
  const auto choices = std::string(first) + '|' + second;
  addCommand(app, name, help)
      ->add_option(choices, value, help)
      ->type_name("")
      ->required()
      ->check(check);
}

/// In the order in which --help shows them.
void addCommands(CLI::App& app, Texts& texts) {
  addCommand(app, "status", "What the proxy does, and how much of it");
  addExplain(app, texts.explain);
  addCommand(app, "watch", "Each query as it is answered, one line");
  addCommand(app, "top", "The same as a picture that keeps itself fresh; q ends it");
  addReport(app, texts);
  addChoice(app, "bypass", "Leave every query to the system's own server, or no more", texts.bypass,
            "on", "off");
  addCommand(app, "reload", "Let the proxy read its settings again");
  addChoice(app, "log", "How much the proxy logs", texts.log, "full", "brief");
  addCommand(app, "metrics", "Its counters as OpenMetrics text");
}

void addOptions(CLI::App& app, Invocation& invocation) {
  app.add_option("--socket", invocation.socket, "The proxy's control socket")->type_name("PATH");
  app.add_flag("--json", invocation.asJSON, "Print the result as JSON");
  app.set_version_flag("--version", std::string("quilletctl ") + quillet::deployment::kVersion);
  app.require_subcommand(0, 1);
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
}

Command commandOf(const std::string& name, const Texts& texts) {
  if (name == "explain") {
    return texts.explain;
  }
  if (name == "report") {
    auto report = texts.report;
    report.seconds = platform::wholeNumber<std::uint64_t>(texts.seconds);
    return report;
  }
  if (name == "bypass") {
    return Bypass{texts.bypass == "on"};
  }
  if (name == "log") {
    return Log{texts.log};
  }
  if (name == "watch") {
    return Watch{};
  }
  if (name == "top") {
    return Top{};
  }
  if (name == "reload") {
    return Reload{};
  }
  return name == "metrics" ? Command(Metrics{}) : Status{};
}

}  // namespace

std::variant<Invocation, int> parseCommandLine(int argc, const char* const* argv) {
  CLI::App app("Shows and changes what the DNS proxy of this machine does.", "quilletctl");
  Texts texts;
  Invocation invocation;
  addOptions(app, invocation);
  addCommands(app, texts);
  try {
    app.parse(argc, argv);
    if (app.get_subcommands().empty()) {
      throw CLI::RequiredError("COMMAND");
    }
    const auto name = app.get_subcommands().front()->get_name();
    if (name == "top" && invocation.asJSON) {
      throw CLI::ValidationError("--json", "top shows a picture; see watch");
    }
    invocation.command = commandOf(name, texts);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kBadUsage;
  }
  return invocation;
}

}  // namespace quilletctl
