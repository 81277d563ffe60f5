// BigInt against GMP over many random and extreme operands.

#include <gtest/gtest.h>

#include <random>

#include "netaddr/BigInt.h"
#include "tests/netaddr/BigIntSamples.h"
#include "tests/netaddr/Mpz.h"
#include "tests/netaddr/Thrown.h"

namespace quillet {
namespace {

/// Whether the call's value is GMP's, or throws where GMP's does not fit.
template <class Call>
bool agrees(Call call, const Mpz& theirs) {
  BigInt ours;
  const bool threw = !thrownBy([&] { ours = call(); }).empty();
  return threw ? !theirs.fits() : theirs.fits() && mpz_cmp(Mpz(ours).get(), theirs.get()) == 0;
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
    constexpr BigInt::Word kEdges[] = {0, 0xFFFFFFFF, 0x80000000};
    const auto choice = random_() % 8;
    return choice < 3 ? kEdges[choice] : static_cast<BigInt::Word>(random_());
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
    ASSERT_TRUE(agrees([&] { return a.add(b); }, result)) << i;
    mpz_sub(result.get(), x.get(), y.get());
    ASSERT_TRUE(agrees([&] { return a.subtract(b); }, result)) << i;
    mpz_mul(result.get(), x.get(), y.get());
    ASSERT_TRUE(agrees([&] { return a.multiply(b); }, result)) << i;
    if (mpz_sgn(y.get()) != 0) {
      mpz_tdiv_q(result.get(), x.get(), y.get());
      ASSERT_TRUE(agrees([&] { return a.divide(b); }, result)) << i;
      mpz_tdiv_r(result.get(), x.get(), y.get());
      ASSERT_TRUE(agrees([&] { return a.mod(b); }, result)) << i;
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
    ASSERT_TRUE(agrees([&] { return a.gcd(b); }, result)) << i;
    const BigInt positive = operands.nextPositive();
    mpz_sqrt(result.get(), Mpz(positive).get());
    ASSERT_TRUE(agrees([&] { return positive.sqrt(); }, result)) << i;
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
    const BigInt power = base.modPow(exponent, modulus);
    const bool isBelow = power.lessThan(BigInt()) && base.lessThan(BigInt());
    ASSERT_TRUE(agrees([&] { return isBelow ? power.add(modulus) : power; }, result)) << i;
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

}  // namespace
}  // namespace quillet
