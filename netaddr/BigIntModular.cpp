#include "netaddr/BarrettModulus.h"
#include "netaddr/BigInt.h"
#include "netaddr/Magnitude.h"
#include "netaddr/NamedException.h"

namespace quillet {

BigInt BigInt::modPow(const BigInt& exponent, const BigInt& modulus) const {
  if (exponent.negative()) {
    throw NamedException("ArithmeticException", "Positive exponents only.");
  }
  const Magnitude e(exponent);
  const Magnitude n(modulus);
  if (n.words().empty()) {
    return {};
  }
  const BarrettModulus m(n.words());
  const auto power = m.power(m.reduced(*this), e.words());
  if (negative() && (exponent.limbs_[0] & 1) != 0) {
    return Magnitude::toBigInt(m.view(m.difference(m.reduced(words::View()), power)), true);
  }
  return Magnitude::toBigInt(m.view(power));
}

BigInt BigInt::barrettReduction(const BigInt& x, const BigInt& n, const BigInt& constant) {
  const Magnitude number(x);
  const Magnitude modulus(n);
  const Magnitude c(constant);
  if (x.negative() || n.negative() || c.negative() || modulus.words().empty() ||
      number.words().size() > 2 * modulus.words().size()) {
    return x.mod(n);
  }
  const BarrettModulus m(modulus.words(), c.words());
  return Magnitude::toBigInt(m.view(m.reduced(number.words())));
}

}  // namespace quillet
