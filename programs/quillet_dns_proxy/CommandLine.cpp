#include "programs/quillet_dns_proxy/CommandLine.h"

#include <DeploymentValues.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <map>

#include "control/ControlPlaces.h"
#include "programs/LogOption.h"

namespace quillet {

namespace {

constexpr int kBadUsage = 2;
constexpr char kDefaultListen[] = "127.0.0.1:5300";

std::optional<std::string> environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0' ? std::optional<std::string>(value) : std::nullopt;
}

/// The service manager's state directory, else the user's (XDG base directories), else the
/// system's.
std::filesystem::path usualDefaultsDirectory() {
  if (const auto state = environment("STATE_DIRECTORY")) {
    return state->substr(0, state->find(':'));  // the first of several
  }
  if (const auto state = environment("XDG_STATE_HOME")) {
    return std::filesystem::path(*state) / "quillet";
  }
  if (const auto home = environment("HOME")) {
    return std::filesystem::path(*home) / ".local" / "state" / "quillet";
  }
  return "/var/lib/quillet";
}

using Depth = platform::SenderLookup::Depth;

const std::map<std::string, std::optional<Depth>> kDepths = {
    {"off", std::nullopt}, {"cgroup", Depth::cgroup}, {"process", Depth::process}};

std::string checkListenAddress(const std::string& text) {
  return ListenAddress::parse(text) ? "" : text + " is no ADDR:PORT";
}

std::string checkDepth(const std::string& text) {
  return kDepths.contains(text) ? "" : text + " is none of off, cgroup, process";
}

/// The options as they were given.
struct Texts {
  std::vector<std::string> listen{kDefaultListen};
  std::optional<std::string> vendorData;
  std::string defaultsDirectory = usualDefaultsDirectory();
  std::string control = controlPlaces().front();
  std::string sourceApp = "unknown";
  std::string identify = "cgroup";
  bool safeSearch = false;
  bool check = false;
};

void addOptions(CLI::App& app, Texts& texts) {
  app.add_option("--listen", texts.listen, "Address to serve, repeatable; IPv6 as [::1]:5300")
      ->type_name("ADDR:PORT")
      ->check(checkListenAddress)
      ->allow_extra_args(false)
      ->capture_default_str();
  app.add_option("--vendor-data", texts.vendorData,
                 "JSON object with the provider's settings; read again on SIGHUP")
      ->type_name("FILE");
  app.add_option("--defaults-dir", texts.defaultsDirectory, "Folder of the user defaults")
      ->type_name("DIR")
      ->capture_default_str();
  app.add_option("--control", texts.control,
                 "Control socket, for root and this service's user and group; none for none")
      ->type_name("PATH|none")
      ->capture_default_str();
  app.add_option("--source-app", texts.sourceApp,
                 "Signing identifier of flows whose application is not known")
      ->type_name("ID")
      ->capture_default_str();
  app.add_option(
         "--identify", texts.identify,
         "How the application of a flow is found: by the cgroup of its socket, by the process "
         "that holds it where the cgroup does not tell, or not at all")
      ->type_name("off|cgroup|process")
      ->check(checkDepth)
      ->capture_default_str();
  app.add_flag("--safe-search", texts.safeSearch,
               "Send every query unchanged to the filtering service's standard DNS port");
  addLogOption(app, "What is logged of each query: every step, or one line when it is over");
  app.add_flag("--check", texts.check,
               "Check the settings, print what is wrong with them, and end; nothing is served");
  app.set_version_flag("--version", std::string("quillet-dns-proxy ") + deployment::kVersion);
}

/// Of options that were checked.
CommandLine commandLineFrom(const Texts& texts) {
  CommandLine result;
  for (const auto& text : texts.listen) {
    result.listen.push_back(ListenAddress::parse(text).value());
  }
  if (texts.vendorData) {
    result.vendorData = *texts.vendorData;
  }
  result.defaultsDirectory = texts.defaultsDirectory;
  if (texts.control != "none") {
    result.control = texts.control;
  }
  result.sourceApp = texts.sourceApp;
  result.identify = kDepths.at(texts.identify);
  result.safeSearch = texts.safeSearch;
  result.check = texts.check;
  return result;
}

}  // namespace

std::variant<CommandLine, int> parseCommandLine(int argc, const char* const* argv) {
  CLI::App app("DNS proxy: adds the identity of organisation, user and application to DNS queries.",
               "quillet-dns-proxy");
  Texts texts;
  addOptions(app, texts);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kBadUsage;
  }
  return commandLineFrom(texts);
}

}  // namespace quillet
