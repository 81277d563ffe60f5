#include "netaddr/MontgomeryModulus.h"

#include <algorithm>

namespace quillet {

using words::Buffer;
using words::DoubleLimb;
using words::Limb;
using words::View;

namespace {

using DoubleLimbs = std::array<Limb, 2 * BigInt::kLimbs>;

/// Newton's iteration; each step doubles the bits that are right, of which an odd number is itself
/// the first three.
Limb inverseOf(Limb odd) {
  Limb inverse = odd;
  for (int bits = 3; bits < words::kLimbBits; bits *= 2) {
    inverse *= 2 - odd * inverse;
  }
  return inverse;
}

}  // namespace

MontgomeryModulus::MontgomeryModulus(View modulus)
    : modulus_(modulus), negatedInverse_(-inverseOf(modulus[0])) {}

MontgomeryModulus::Residue MontgomeryModulus::product(const Residue& a, const Residue& b) const {
  DoubleLimbs limbs;
  const auto product = Buffer(limbs).first(2 * modulus_.size());
  words::multiply(product, View(a).first(modulus_.size()), View(b).first(modulus_.size()));
  return reduced(product);
}

MontgomeryModulus::Residue MontgomeryModulus::squared(const Residue& a) const {
  DoubleLimbs limbs;
  const auto product = Buffer(limbs).first(2 * modulus_.size());
  words::square(product, View(a).first(modulus_.size()));
  return reduced(product);
}

MontgomeryModulus::Residue MontgomeryModulus::fromForm(const Residue& a) const {
  DoubleLimbs limbs{};
  std::ranges::copy(View(a).first(modulus_.size()), limbs.begin());
  return reduced(Buffer(limbs).first(2 * modulus_.size()));
}

MontgomeryModulus::Residue MontgomeryModulus::reduced(Buffer number) const {
  // Multiples of the modulus make the lower half zero, limb by limb.
  const std::size_t size = modulus_.size();
  Limb carry = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const Limb row = words::addProduct(number.subspan(i), modulus_, number[i] * negatedInverse_);
    const DoubleLimb sum = DoubleLimb{number[i + size]} + row + carry;
    number[i + size] = static_cast<Limb>(sum);
    carry = static_cast<Limb>(sum >> words::kLimbBits);
  }
  const Buffer upper = number.subspan(size);
  if (carry != 0 || words::compare(upper, modulus_) >= 0) {
    words::subtract(upper, modulus_);
  }
  Residue result;
  std::ranges::copy(upper, result.begin());
  return result;
}

}  // namespace quillet
