#include "control_client/ControlPlaces.h"

#include <cstdlib>
#include <string>

namespace quilletctl {

namespace {

constexpr char kSocket[] = "dns-proxy.sock";

std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

std::vector<std::filesystem::path> controlPlaces() {
  std::vector<std::filesystem::path> places;
  const auto service = environment("RUNTIME_DIRECTORY");
  if (const auto first = service.substr(0, service.find(':')); !first.empty()) {
    places.push_back(std::filesystem::path(first) / kSocket);
  }
  if (const auto users = environment("XDG_RUNTIME_DIR"); !users.empty()) {
    places.push_back(std::filesystem::path(users) / "quillet" / kSocket);
  }
  places.push_back(std::filesystem::path("/run/quillet") / kSocket);
  return places;
}

}  // namespace quilletctl
