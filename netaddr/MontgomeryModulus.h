#pragma once

#include "netaddr/BarrettModulus.h"

namespace quillet {

/// Products modulo an odd number n without a division (P. Montgomery, Modular multiplication
/// without trial division). A number x is handled in the form x * 2^(64 * size) mod n.
class MontgomeryModulus {
 public:
  using Residue = BarrettModulus::Residue;

  /// `modulus` is trimmed, odd, and outlives this object.
  explicit MontgomeryModulus(words::View modulus);

  // Of numbers in that form, in that form.

  [[nodiscard]] Residue product(const Residue& a, const Residue& b) const;
  [[nodiscard]] Residue squared(const Residue& a) const;

  /// The number whose form this is.
  [[nodiscard]] Residue fromForm(const Residue& a) const;

 private:
  /// A number of twice the modulus' size, divided by 2^(64 * size).
  [[nodiscard]] Residue reduced(words::Buffer number) const;

  words::View modulus_;
  words::Limb negatedInverse_;  // of the modulus, modulo 2^64
};

}  // namespace quillet
