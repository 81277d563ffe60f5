#include "netaddr/BigInt.h"
#include "netaddr/BigIntWords.h"
#include "netaddr/NamedException.h"
#include "netaddr/RandomWords.h"

namespace quillet {

void BigInt::getRandomBits(int bits) {
  if (bits > kBits) {
    throw NamedException("ArithmeticException", "Number of required bits > maxLength.");
  }
  BigInt random;
  if (bits > 0) {
    const auto used = static_cast<std::size_t>((bits - 1) / words::kLimbBits) + 1;
    fillWithRandomWords(std::span(random.limbs_).first(used));
    const int topBit = (bits - 1) % words::kLimbBits;
    words::Limb& top = random.limbs_[used - 1];
    top &= ~words::Limb{0} >> (words::kLimbBits - 1 - topBit);
    top |= words::Limb{1} << topBit;
    random.trim(used);
  }
  *this = random;
}

}  // namespace quillet
