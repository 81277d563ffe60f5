#pragma once

#include <string>

#include "netaddr/NamedException.h"

namespace quillet {

/// "name: reason" of the NamedException that the call throws; empty when it throws none.
template <class Call>
std::string thrownBy(Call call) {
  try {
    call();
  } catch (const NamedException& exception) {
    return std::string(exception.name()) + ": " + std::string(exception.reason());
  }
  return {};
}

}  // namespace quillet
