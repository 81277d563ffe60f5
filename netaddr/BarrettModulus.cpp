#include "netaddr/BarrettModulus.h"

#include <algorithm>

#include "netaddr/Magnitude.h"
#include "netaddr/MontgomeryModulus.h"

namespace quillet {
namespace {

using words::Buffer;
using words::Limb;
using words::View;

// What goes into a quotient, together: the upper limbs of a number, and the longest constant.
constexpr std::size_t kDoubleLimbs = (BigInt::kLimbs + 1) + (BigInt::kLimbs + 2);
using DoubleLimbs = std::array<Limb, kDoubleLimbs>;

/// a * b without the partial products that belong below limb `lowest`. With fewer than 2^64 rows it
/// is too small by less than one of limb `lowest` + 2.
void upperProduct(Buffer product, View a, View b, std::size_t lowest) {
  std::ranges::fill(product, 0);
  for (std::size_t i = 0; i < a.size(); ++i) {
    const std::size_t skipped = std::min(lowest - std::min(lowest, i), b.size());
    const Limb carry = words::addProduct(product.subspan(i + skipped), b.subspan(skipped), a[i]);
    product[i + b.size()] = carry;
  }
}

/// difference -= a * b, as many limbs of it as the difference has.
void subtractLowerProduct(Buffer difference, View a, View b) {
  for (std::size_t i = 0; i < std::min(a.size(), difference.size()); ++i) {
    const Buffer rest = difference.subspan(i);
    const View row = b.first(std::min(b.size(), rest.size()));
    const Limb borrow = words::subtractProduct(rest, row, a[i]);
    if (row.size() < rest.size()) {
      words::subtract(rest.subspan(row.size()), View(&borrow, 1));
    }
  }
}

/// A power by the products of `arithmetic`, in which `unit` is one. Digits of four bits, from the
/// top: long exponents pay for the table of powers many times over.
template <class Arithmetic>
BarrettModulus::Residue powerIn(const Arithmetic& arithmetic, const BarrettModulus::Residue& unit,
                                const BarrettModulus::Residue& base, View exponent) {
  const int width = words::bitLength(exponent) > words::kLimbBits ? 4 : 1;
  std::array<BarrettModulus::Residue, 16> powers;
  powers[0] = unit;
  for (std::size_t i = 1; i < (std::size_t{1} << width); ++i) {
    powers[i] = arithmetic.product(powers[i - 1], base);
  }
  BarrettModulus::Residue result = unit;
  for (int at = (words::bitLength(exponent) + width - 1) / width * width; at > 0;) {
    at -= width;
    for (int i = 0; i < width; ++i) {
      result = arithmetic.squared(result);
    }
    if (const Limb digit = words::digitAt(exponent, at, width); digit != 0) {
      result = arithmetic.product(result, powers[digit]);
    }
  }
  return result;
}

}  // namespace

BarrettModulus::BarrettModulus(View modulus) : modulus_(modulus), size_(modulus.size()) {
  computeConstant();
}

BarrettModulus::BarrettModulus(View modulus, View constant)
    : modulus_(modulus), size_(modulus.size()) {
  if (!isConstant(constant)) {
    computeConstant();
    return;
  }
  std::ranges::copy(constant, constant_.begin());
  constantSize_ = constant.size();
}

bool BarrettModulus::isConstant(View candidate) const {
  if (candidate.size() > size_ + 2) {
    return false;
  }
  DoubleLimbs productWords;
  const Buffer product = Buffer(productWords).first(size_ + candidate.size());
  words::multiply(product, modulus_, candidate);
  DoubleLimbs restWords{};
  restWords[2 * size_] = 1;
  const Buffer rest = Buffer(restWords).first(2 * size_ + 2);
  return words::subtract(rest, product) == 0 && words::compare(words::trimmed(rest), modulus_) < 0;
}

void BarrettModulus::computeConstant() {
  DoubleLimbs dividend{};
  dividend[2 * size_] = 1;
  Residue remainder;
  words::divide(Buffer(constant_).first(size_ + 2), Buffer(remainder).first(size_),
                View(dividend).first(2 * size_ + 1), modulus_);
  constantSize_ = words::trimmed(View(constant_).first(size_ + 2)).size();
}

BarrettModulus::Residue BarrettModulus::reduced(View number) const {
  Residue result{};
  const Buffer residue = Buffer(result).first(size_);
  if (number.size() < size_) {
    std::ranges::copy(number, residue.begin());
    return result;
  }
  // The quotient from the upper limbs, at most three too small.
  DoubleLimbs quotientWords;
  const View upper = number.subspan(size_ - 1);
  const Buffer quotient = Buffer(quotientWords).first(upper.size() + constantSize_);
  upperProduct(quotient, upper, constant(), size_ - 1);
  // What is left fits one limb more than the modulus.
  DoubleLimbs restWords{};
  const Buffer rest = Buffer(restWords).first(size_ + 1);
  std::ranges::copy(number.first(std::min(number.size(), rest.size())), rest.begin());
  subtractLowerProduct(rest, quotient.subspan(std::min(size_ + 1, quotient.size())), modulus_);
  while (words::compare(words::trimmed(rest), modulus_) >= 0) {
    words::subtract(rest, modulus_);
  }
  std::ranges::copy(rest.first(size_), residue.begin());
  return result;
}

BarrettModulus::Residue BarrettModulus::reduced(const BigInt& number) const {
  const Magnitude magnitude(number);
  Residue quotient;
  Residue remainder{};
  const std::size_t length = magnitude.words().size();
  words::divide(Buffer(quotient).first(length < size_ ? 0 : length - size_ + 1),
                Buffer(remainder).first(size_), magnitude.words(), modulus_);
  return magnitude.negative() ? difference(reduced(View()), remainder) : remainder;
}

BarrettModulus::Residue BarrettModulus::product(const Residue& a, const Residue& b) const {
  DoubleLimbs productWords;
  const Buffer product = Buffer(productWords).first(2 * size_);
  words::multiply(product, view(a), view(b));
  return reduced(product);
}

BarrettModulus::Residue BarrettModulus::squared(const Residue& a) const {
  DoubleLimbs productWords;
  const Buffer product = Buffer(productWords).first(2 * size_);
  words::square(product, view(a));
  return reduced(product);
}

BarrettModulus::Residue BarrettModulus::sum(const Residue& a, const Residue& b) const {
  Residue result = a;
  const Buffer residue = Buffer(result).first(size_);
  const Limb carry = words::add(residue, view(b));
  if (carry != 0 || words::compare(residue, modulus_) >= 0) {
    words::subtract(residue, modulus_);
  }
  return result;
}

BarrettModulus::Residue BarrettModulus::difference(const Residue& a, const Residue& b) const {
  Residue result = a;
  const Buffer residue = Buffer(result).first(size_);
  if (words::subtract(residue, view(b)) != 0) {
    words::add(residue, modulus_);
  }
  return result;
}

BarrettModulus::Residue BarrettModulus::power(const Residue& base, View exponent) const {
  constexpr Limb one = 1;
  const Residue unit = reduced(View(&one, 1));
  if (modulus_[0] % 2 == 0) {
    return powerIn(*this, unit, base, exponent);
  }
  const MontgomeryModulus montgomery(modulus_);
  DoubleLimbs radix{};
  radix[size_] = 1;
  const Residue unitForm = reduced(View(radix).first(size_ + 1));
  return montgomery.fromForm(powerIn(montgomery, unitForm, product(base, unitForm), exponent));
}

bool BarrettModulus::equal(const Residue& a, const Residue& b) const {
  return words::compare(view(a), view(b)) == 0;
}

}  // namespace quillet
