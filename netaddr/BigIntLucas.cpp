#include <algorithm>

#include "netaddr/BarrettModulus.h"
#include "netaddr/BigInt.h"
#include "netaddr/Magnitude.h"
#include "netaddr/NamedException.h"

namespace quillet {
namespace {

using words::Limb;
using words::View;
using Residue = BarrettModulus::Residue;

struct Terms {
  Residue u;
  Residue v;
  Residue qPower;
};

/// The terms at index k, from the top bit of k down. With (U_j, U_j+1) at hand
///   U_2j   = U_j * (2 * U_j+1 - p * U_j)
///   U_2j+1 = U_j+1^2 - q * U_j^2
///   U_2j+2 = p * U_2j+1 - q * U_2j
/// which takes no division, and at the end
///   V_k = 2 * U_k+1 - p * U_k   and   q^k = U_k+1^2 - U_k * (p * U_k+1 - q * U_k).
Terms termsAt(const BarrettModulus& m, const Residue& p, const Residue& q, View k) {
  constexpr Limb one = 1;
  Residue u = m.reduced(View());
  Residue next = m.reduced(View(&one, 1));
  for (int at = words::bitLength(k); at-- > 0;) {
    const Residue v = m.difference(m.sum(next, next), m.product(p, u));
    const Residue odd = m.difference(m.squared(next), m.product(q, m.squared(u)));
    u = m.product(u, v);
    next = odd;
    if (words::digitAt(k, at, 1) != 0) {
      next = m.difference(m.product(p, odd), m.product(q, u));
      u = odd;
    }
  }
  const Residue v = m.difference(m.sum(next, next), m.product(p, u));
  const Residue cross = m.difference(m.product(p, next), m.product(q, u));
  return {u, v, m.difference(m.squared(next), m.product(u, cross))};
}

/// From index k to 2k.
void doubleIndex(const BarrettModulus& m, Terms& terms) {
  terms.u = m.product(terms.u, terms.v);
  terms.v = m.difference(m.squared(terms.v), m.sum(terms.qPower, terms.qPower));
  terms.qPower = m.squared(terms.qPower);
}

/// The first of 5, -7, 9, -11, ... whose Jacobi symbol over n is -1; 0 when n turns out to be
/// composite on the way. A square has none, and for all other numbers one comes soon, so that a
/// square is looked for only after some.
std::int64_t lucasDiscriminant(const BigInt& n) {
  for (std::int64_t d = 5;; d += 2) {
    const std::int64_t signedD = d % 4 == 1 ? d : -d;
    const int symbol = BigInt::jacobi(BigInt(signedD), n);
    if (symbol == -1) {
      return signedD;
    }
    const bool sharesFactor = symbol == 0 && !BigInt(d).mod(n).equals(BigInt());
    const bool square = d == 31 && n.sqrt().multiply(n.sqrt()).equals(n);
    if (sharesFactor || square) {
      return 0;
    }
  }
}

/// n + 1 is k * 2^s for an odd k, and a prime n makes U_k zero, or one of V_k, V_2k, ...,
/// V_(2^(s-1) * k).
bool passesStrongLucas(View n, std::int64_t discriminant) {
  constexpr Limb one = 1;
  Residue k{};
  std::ranges::copy(n, k.begin());
  words::add(k, View(&one, 1));
  const int s = words::trailingZeros(k);
  words::shiftRight(words::Buffer(k), static_cast<std::size_t>(s));

  const BarrettModulus m(n);
  Terms terms = termsAt(m, m.reduced(BigInt(1)), m.reduced(BigInt((1 - discriminant) / 4)),
                        words::trimmed(k));
  bool passed = m.isZero(terms.u) || m.isZero(terms.v);
  for (int i = 1; i < s && !passed; ++i) {
    doubleIndex(m, terms);
    passed = m.isZero(terms.v);
  }
  return passed;
}

}  // namespace

int BigInt::jacobi(const BigInt& a, const BigInt& b) {
  if (b.limbs_[0] % 2 == 0) {
    throw NamedException("ArgumentException", "Jacobi defined only for odd integers.");
  }
  BigInt n = b.abs();
  BigInt x = a.mod(n);
  int symbol = a.negative() && b.negative() ? -1 : 1;
  if (x.negative()) {
    x = x.negate();
    symbol = n.limbs_[0] % 4 == 3 ? -symbol : symbol;
  }
  while (!x.equals(BigInt())) {
    const int twos = words::trailingZeros(x.limbs_);
    x = x.shiftRight(twos);
    const bool twoFlips = n.limbs_[0] % 8 == 3 || n.limbs_[0] % 8 == 5;
    const bool swapFlips = x.limbs_[0] % 4 == 3 && n.limbs_[0] % 4 == 3;
    symbol = (twos % 2 != 0 && twoFlips) != swapFlips ? -symbol : symbol;
    const BigInt rest = n.mod(x);
    n = x;
    x = rest;
  }
  return n.equals(BigInt(1)) ? symbol : 0;
}

BigInt::LucasTerms BigInt::lucasSequence(const BigInt& p, const BigInt& q, const BigInt& k,
                                         const BigInt& n, const BigInt& constant, int s) {
  if (k.limbs_[0] % 2 == 0) {
    throw NamedException("ArgumentException", "Argument k must be odd.");
  }
  const Magnitude modulus(n);
  if (modulus.words().empty()) {
    return {};
  }
  const BarrettModulus m(modulus.words(), Magnitude(constant).words());
  Terms terms = termsAt(m, m.reduced(p), m.reduced(q), Magnitude(k).words());
  for (int i = 0; i < s; ++i) {
    doubleIndex(m, terms);
  }
  return {Magnitude::toBigInt(m.view(terms.u)), Magnitude::toBigInt(m.view(terms.v)),
          Magnitude::toBigInt(m.view(terms.qPower))};
}

bool BigInt::lucasStrongTest(const BigInt& candidate) {
  const Magnitude magnitude(candidate);
  const View n = magnitude.words();
  if (n.empty() || n[0] % 2 == 0) {
    return n.size() == 1 && n[0] == 2;
  }
  const BigInt positive = Magnitude::toBigInt(n);
  const std::int64_t discriminant = positive.equals(BigInt(1)) ? 0 : lucasDiscriminant(positive);
  return discriminant != 0 && passesStrongLucas(n, discriminant);
}

}  // namespace quillet
