#include "platform/xpc/ServicePlaces.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace platform {

namespace {

constexpr char kUsualDirectory[] = "/run/quillet";

std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

/// Others could exchange what lies in a folder of theirs; after su(1) the variable may be another
/// user's, who could answer in the service's place.
bool isOurFolder(const std::string& path) {
  struct stat file {};
  return ::lstat(path.c_str(), &file) == 0 && S_ISDIR(file.st_mode) && file.st_uid == ::geteuid();
}

}  // namespace

std::vector<std::filesystem::path> servicePlaces(const std::string& serviceName,
                                                 const std::string& usersFolder) {
  std::vector<std::filesystem::path> places;
  const auto directories = environment("RUNTIME_DIRECTORY");
  if (const auto first = directories.substr(0, directories.find(':')); !first.empty()) {
    places.push_back(std::filesystem::path(first) / serviceName);
  }
  if (const auto users = environment("XDG_RUNTIME_DIR"); isOurFolder(users)) {
    places.push_back(std::filesystem::path(users) / usersFolder / serviceName);
  }
  places.push_back(std::filesystem::path(kUsualDirectory) / serviceName);
  return places;
}

}  // namespace platform
