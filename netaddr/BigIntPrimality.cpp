#include <algorithm>
#include <array>

#include "netaddr/BarrettModulus.h"
#include "netaddr/BigInt.h"
#include "netaddr/Magnitude.h"
#include "netaddr/NamedException.h"
#include "netaddr/RandomWords.h"

namespace quillet {
namespace {

using words::Limb;
using words::View;
using Residue = BarrettModulus::Residue;

constexpr Limb kOne = 1;
constexpr Limb kTwo = 2;

constexpr bool isPrimeByTrial(Limb n) {
  for (Limb divisor = 2; divisor * divisor <= n; ++divisor) {
    if (n % divisor == 0) {
      return false;
    }
  }
  return n >= 2;
}

/// The primes below 2000.
constexpr auto kSmallPrimes = [] {
  std::array<Limb, 303> primes{};
  std::size_t count = 0;
  for (Limb n = 2; n < 2000; ++n) {
    if (isPrimeByTrial(n)) {
      primes[count++] = n;
    }
  }
  return primes;
}();
static_assert(kSmallPrimes.back() == 1999);

enum class Verdict { composite, prime, open };

/// What can be said of the smallest numbers and the even ones.
Verdict obviousVerdict(View n) {
  if (n.empty() || words::compare(n, View(&kOne, 1)) == 0) {
    return Verdict::composite;
  }
  if (n.size() == 1 && n[0] <= 3) {
    return Verdict::prime;
  }
  return n[0] % 2 == 0 ? Verdict::composite : Verdict::open;
}

Verdict trialDivision(View n) {
  const Verdict obvious = obviousVerdict(n);
  if (obvious != Verdict::open) {
    return obvious;
  }
  for (const Limb prime : kSmallPrimes) {
    if (n.size() == 1 && prime >= n[0]) {
      break;
    }
    if (words::remainderByLimb(n, prime) == 0) {
      return Verdict::composite;
    }
  }
  return Verdict::open;
}

/// One round for n, odd and above 4, to a base from 2 to n - 2: n - 1 is d * 2^s for an odd d, and
/// a prime makes base^d one, or minus one of base^d, base^2d, ..., base^(2^(s-1) * d).
bool passesStrongTest(const BarrettModulus& m, const Residue& base) {
  const Residue one = m.reduced(View(&kOne, 1));
  const Residue minusOne = m.difference(m.reduced(View()), one);
  const int twos = words::trailingZeros(m.view(minusOne));
  Residue d = minusOne;
  words::shiftRight(words::Buffer(d), static_cast<std::size_t>(twos));
  Residue power = m.power(base, words::trimmed(m.view(d)));
  if (m.equal(power, one)) {
    return true;
  }
  for (int i = 1; i < twos && !m.equal(power, minusOne); ++i) {
    power = m.squared(power);
  }
  return m.equal(power, minusOne);
}

/// A random number from 2 to n - 2 for an n above 4. Numbers at the lower end come up to twice as
/// often, which a base may.
Residue randomBase(const BarrettModulus& m, View n) {
  const Limb three = 3;
  Residue random{};
  Residue quotient;
  Residue base{};
  Residue range{};
  std::ranges::copy(n, range.begin());
  words::subtract(range, View(&three, 1));
  const View bound = words::trimmed(range);
  fillWithRandomWords(words::Buffer(random).first(n.size()));
  words::divide(words::Buffer(quotient).first(n.size() - bound.size() + 1),
                words::Buffer(base).first(bound.size()), m.view(random), bound);
  words::add(base, View(&kTwo, 1));
  return base;
}

bool passesRabinMiller(View n, int confidence) {
  const Verdict obvious = obviousVerdict(n);
  if (obvious != Verdict::open) {
    return obvious == Verdict::prime;
  }
  const BarrettModulus m(n);
  for (int round = 0; round < std::max(confidence, 1); ++round) {
    if (!passesStrongTest(m, randomBase(m, n))) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool BigInt::isProbablePrime() const {
  const Magnitude n(*this);
  const Verdict verdict = trialDivision(n.words());
  if (verdict != Verdict::open) {
    return verdict == Verdict::prime;
  }
  const BarrettModulus m(n.words());
  return passesStrongTest(m, m.reduced(View(&kTwo, 1))) && lucasStrongTest(*this);
}

bool BigInt::isProbablePrimeWithConfidence(int confidence) const {
  const Magnitude n(*this);
  const Verdict verdict = trialDivision(n.words());
  return verdict == Verdict::open ? passesRabinMiller(n.words(), confidence)
                                  : verdict == Verdict::prime;
}

bool BigInt::rabinMillerTestWithConfidence(int confidence) const {
  return passesRabinMiller(Magnitude(*this).words(), confidence);
}

BigInt BigInt::generatePseudoPrimeWithBits(int bits, int confidence) {
  if (bits >= kBits) {
    throw NamedException("ArithmeticException", "Number of required bits > maxLength.");
  }
  BigInt candidate;
  while (bits >= 2) {
    candidate.getRandomBits(bits);
    candidate.limbs_[0] |= 1;
    if (candidate.isProbablePrimeWithConfidence(confidence)) {
      break;
    }
  }
  return candidate;
}

}  // namespace quillet
