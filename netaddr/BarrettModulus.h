#pragma once

#include <array>

#include "netaddr/BigInt.h"
#include "netaddr/BigIntWords.h"

namespace quillet {

/// Arithmetic modulo one number, where a product is reduced by two multiplications with a constant
/// made beforehand instead of by a division (Handbook of Applied Cryptography, algorithm 14.42).
class BarrettModulus {
 public:
  /// A number below the modulus. Limbs at and above the modulus' size are without meaning.
  using Residue = std::array<words::Limb, BigInt::kLimbs>;

  /// `modulus` is trimmed, not zero, and outlives this object.
  explicit BarrettModulus(words::View modulus);
  /// The same with a constant at hand: floor(2^(128 * size) / modulus), where size is the modulus'
  /// in limbs. A constant that is not it is replaced by it.
  BarrettModulus(words::View modulus, words::View constant);

  /// Any number of up to twice the modulus' size, reduced.
  [[nodiscard]] Residue reduced(words::View number) const;
  /// Any number, reduced; a negative one to what is congruent from 0 up.
  [[nodiscard]] Residue reduced(const BigInt& number) const;

  // Of residues, reduced again; the exponent is not negative. An odd modulus takes powers by
  // Montgomery's method.

  [[nodiscard]] Residue product(const Residue& a, const Residue& b) const;
  [[nodiscard]] Residue squared(const Residue& a) const;
  [[nodiscard]] Residue sum(const Residue& a, const Residue& b) const;
  [[nodiscard]] Residue difference(const Residue& a, const Residue& b) const;
  [[nodiscard]] Residue power(const Residue& base, words::View exponent) const;

  /// The residue's limbs, as many as the modulus has.
  [[nodiscard]] words::View view(const Residue& a) const { return words::View(a).first(size_); }
  [[nodiscard]] bool isZero(const Residue& a) const { return words::trimmed(view(a)).empty(); }
  [[nodiscard]] bool equal(const Residue& a, const Residue& b) const;

 private:
  [[nodiscard]] words::View constant() const { return words::View(constant_).first(constantSize_); }
  [[nodiscard]] bool isConstant(words::View candidate) const;
  void computeConstant();

  words::View modulus_;
  std::size_t size_;
  // Longest, two limbs more than the modulus, for a power of 2^64.
  std::array<words::Limb, BigInt::kLimbs + 2> constant_;
  std::size_t constantSize_ = 0;
};

}  // namespace quillet
