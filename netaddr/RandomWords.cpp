#include "netaddr/RandomWords.h"

#include <sys/random.h>

#include <cerrno>
#include <system_error>

namespace quillet {

void fillWithRandomWords(std::span<std::uint64_t> words) {
  auto rest = std::as_writable_bytes(words);
  while (!rest.empty()) {
    const ssize_t count = getrandom(rest.data(), rest.size(), 0);
    if (count < 0 && errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "getrandom");
    }
    rest = rest.subspan(count < 0 ? 0 : static_cast<std::size_t>(count));
  }
}

}  // namespace quillet
