#include <clocale>
#include <cstdio>
#include <exception>
#include <variant>

#include "programs/quilletctl/CommandLine.h"

int main(int argc, char** argv) {
  std::setlocale(LC_CTYPE, "");
  try {
    const auto parsed = quilletctl::parseCommandLine(argc, argv);
    const int* const status = std::get_if<int>(&parsed);
    return status != nullptr ? *status : quilletctl::run(std::get<quilletctl::Invocation>(parsed));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quilletctl: %s\n", error.what());
    return 1;
  }
}
