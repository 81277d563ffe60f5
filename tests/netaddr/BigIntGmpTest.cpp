// BigInt against GMP over many random and extreme operands.

#include <gtest/gtest.h>

#include <random>

#include "netaddr/BigInt.h"
#include "tests/netaddr/BigIntSamples.h"
#include "tests/netaddr/Mpz.h"
#include "tests/netaddr/Thrown.h"

namespace quillet {
namespace {

::testing::AssertionResult same(const BigInt& ours, const Mpz& theirs) {
  const Mpz value(ours);
  if (mpz_cmp(value.get(), theirs.get()) == 0) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << ::testing::PrintToString(ours);
}

/// Whether the call's value is GMP's, or throws where GMP's does not fit.
template <class Call>
::testing::AssertionResult sameOrThrows(Call call, const Mpz& theirs) {
  BigInt ours;
  const std::string thrown = thrownBy([&] { ours = call(); });
  if (!theirs.fits()) {
    return thrown.empty() ? ::testing::AssertionFailure() << "threw nothing"
                          : ::testing::AssertionSuccess();
  }
  return thrown.empty() ? same(ours, theirs) : ::testing::AssertionFailure() << thrown;
}

/// Numbers of all lengths and signs, whose words are random, zeros or ones.
class Operands {
 public:
  BigInt next() {
    if (random_() % 50 == 0) {
      return random_() % 2 == 0 ? lowest() : highest();
    }
    BigInt value;
    const std::size_t length = random_() % (random_() % 4 == 0 ? 71 : 8);
    for (std::size_t i = 0; i < length; ++i) {
      value.setData(word(), i);
    }
    return random_() % 3 == 0 ? value.bitNot() : value;
  }

  BigInt nextPositive() {
    const BigInt value = next();
    const BigInt natural = value.lessThan(BigInt()) ? value.bitNot() : value;
    return natural.equals(BigInt()) ? BigInt(1) : natural;
  }

 private:
  BigInt::Word word() {
    switch (random_() % 8) {
      case 0:
        return 0;
      case 1:
        return 0xFFFFFFFF;
      case 2:
        return 0x80000000;
      default:
        return static_cast<BigInt::Word>(random_());
    }
  }

  std::mt19937_64 random_{2239};
};

TEST(BigIntGmpTest, FourOperationsAgree) {
  Operands operands;
  Mpz result;
  for (int i = 0; i < 20000; ++i) {
    const BigInt a = operands.next();
    const BigInt b = operands.next();
    const Mpz x(a);
    const Mpz y(b);
    mpz_add(result.get(), x.get(), y.get());
    ASSERT_TRUE(sameOrThrows([&] { return a.add(b); }, result)) << i;
    mpz_sub(result.get(), x.get(), y.get());
    ASSERT_TRUE(sameOrThrows([&] { return a.subtract(b); }, result)) << i;
    mpz_mul(result.get(), x.get(), y.get());
    ASSERT_TRUE(sameOrThrows([&] { return a.multiply(b); }, result)) << i;
    if (mpz_sgn(y.get()) != 0) {
      mpz_tdiv_q(result.get(), x.get(), y.get());
      ASSERT_TRUE(sameOrThrows([&] { return a.divide(b); }, result)) << i;
      mpz_tdiv_r(result.get(), x.get(), y.get());
      ASSERT_TRUE(same(a.mod(b), result)) << i;
    }
  }
}

TEST(BigIntGmpTest, RootsDivisorsAndSymbolsAgree) {
  Operands operands;
  Mpz result;
  for (int i = 0; i < 1500; ++i) {
    const BigInt a = operands.next();
    const BigInt b = operands.next();
    const Mpz x(a);
    const Mpz y(b);
    mpz_gcd(result.get(), x.get(), y.get());
    ASSERT_TRUE(sameOrThrows([&] { return a.gcd(b); }, result)) << i;
    const BigInt positive = operands.nextPositive();
    mpz_sqrt(result.get(), Mpz(positive).get());
    ASSERT_TRUE(same(positive.sqrt(), result)) << i;
    const BigInt odd = b.bitOr(BigInt(1));
    ASSERT_EQ(BigInt::jacobi(a, odd), mpz_kronecker(x.get(), Mpz(odd).get())) << i;
  }
}

TEST(BigIntGmpTest, ModularPowersAgree) {
  Operands operands;
  Mpz result;
  for (int i = 0; i < 150; ++i) {
    const BigInt base = operands.next();
    const BigInt exponent = operands.nextPositive();
    const BigInt modulus = operands.nextPositive();
    mpz_powm(result.get(), Mpz(base).get(), Mpz(exponent).get(), Mpz(modulus).get());
    // GMP's power of a negative base is from 0 up, ours has the sign that `mod` gives.
    const BigInt ours = base.modPow(exponent, modulus);
    ASSERT_TRUE(same(ours.lessThan(BigInt()) ? ours.add(modulus) : ours, result)) << i;
    ASSERT_FALSE(ours.lessThan(BigInt()) && base.greaterThan(BigInt())) << i;
  }
}

TEST(BigIntGmpTest, TextsAgreeInEveryRadix) {
  Operands operands;
  for (int i = 0; i < 700; ++i) {
    const BigInt value = operands.next();
    const int radix = 2 + i % 35;
    std::string expected(BigInt::kBits + 3, '\0');
    mpz_get_str(expected.data(), -radix, Mpz(value).get());
    expected.resize(expected.find('\0'));
    ASSERT_EQ(value.toStringWithRadix(radix), expected);
    ASSERT_EQ(BigInt(expected, radix), value);
  }
}

TEST(BigIntGmpTest, PrimalityAgrees) {
  Operands operands;
  for (int i = 0; i < 400; ++i) {
    const BigInt value = operands.next().shiftRight(i % 2 == 0 ? 1900 : 0).bitOr(BigInt(1));
    ASSERT_EQ(value.isProbablePrime(), mpz_probab_prime_p(Mpz(value).get(), 30) != 0) << i;
  }
}

}  // namespace
}  // namespace quillet
