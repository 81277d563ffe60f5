#include "netaddr/BigInt.h"
#include "netaddr/NamedException.h"
#include "netaddr/RandomWords.h"

namespace quillet {

void BigInt::getRandomBits(int bits) {
  if (bits > kBits) {
    throw NamedException("ArithmeticException", "Number of required bits > maxLength.");
  }
  BigInt random;
  if (bits > 0) {
    const auto used = static_cast<std::size_t>((bits - 1) / kWordBits) + 1;
    fillWithRandomWords(std::span(random.data_).first(used));
    const int topBit = (bits - 1) % kWordBits;
    Word& top = random.data_[used - 1];
    top &= ~Word{0} >> (kWordBits - 1 - topBit);
    top |= Word{1} << topBit;
    random.dataLength_ = used;
  }
  *this = random;
}

}  // namespace quillet
