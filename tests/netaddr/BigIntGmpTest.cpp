// BigInt against GMP over many random and extreme operands.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "netaddr/BigInt.h"
#include "tests/netaddr/Mpz.h"
#include "tests/netaddr/Samples.h"

namespace quillet::test {

/// Numbers of all lengths and signs, whose words are random, zeros or ones.
class Operands {
 public:
  int below(std::size_t bound) { return static_cast<int>(random_() % bound); }

  BigInt next() {
    if (below(50) == 0) {
      return below(2) == 0 ? lowest() : highest();
    }
    BigInt value;
    const int length = below(below(4) == 0 ? 71 : 8);
    for (int i = 0; i < length; ++i) {
      value.setData(word(), static_cast<std::size_t>(i));
    }
    return below(3) == 0 ? value.bitNot() : value;
  }
  BigInt nextNatural() {
    const BigInt value = next();
    return value.lessThan(BigInt()) ? value.bitNot() : value;
  }
  BigInt nextOdd() { return next().bitOr(BigInt(1)); }

 private:
  BigInt::Word word() {
    constexpr BigInt::Word kEdges[] = {0, 0xFFFFFFFF, 0x80000000};
    const auto choice = random_() % 8;
    return choice < 3 ? kEdges[choice] : static_cast<BigInt::Word>(random_());
  }

  std::mt19937_64 random_{2239};
};

class BigIntGmpTest : public testing::Test {
 protected:
  /// The call's value is GMP's and as long as its words need, or it throws where GMP's does not
  /// fit.
  template <class Call>
  void expectResult(Call call) const {
    BigInt ours;
    if (!thrownBy([&] { ours = call(); }).empty()) {
      EXPECT_FALSE(result_.fits());
      return;
    }
    EXPECT_TRUE(result_.fits() && mpz_cmp(Mpz(ours).get(), result_.get()) == 0)
        << testing::PrintToString(ours);
    EXPECT_EQ(ours.dataLength(), BigInt(ours.getData()).dataLength());
  }

  void expectOperations(const BigInt& a, const BigInt& b) {
    using Theirs = void (*)(mpz_ptr, mpz_srcptr, mpz_srcptr);
    using Ours = BigInt (BigInt::*)(const BigInt&) const;
    const std::pair<Theirs, Ours> rows[] = {
        {mpz_add, &BigInt::add},       {mpz_sub, &BigInt::subtract}, {mpz_mul, &BigInt::multiply},
        {mpz_tdiv_q, &BigInt::divide}, {mpz_tdiv_r, &BigInt::mod},   {mpz_and, &BigInt::bitAnd},
        {mpz_ior, &BigInt::bitOr},     {mpz_xor, &BigInt::xOr},      {mpz_gcd, &BigInt::gcd},
    };
    const Mpz x(a);
    const Mpz y(b);
    for (const auto& [theirs, ours] : rows) {
      theirs(result(), x.get(), y.get());
      expectResult([&, operation = ours] { return (a.*operation)(b); });
    }
    const int order = mpz_cmp(x.get(), y.get());
    EXPECT_EQ(a.equals(b), order == 0);
    EXPECT_EQ(a.greaterThan(b), order > 0);
    EXPECT_EQ(a.lessThanOrEqualTo(b), order <= 0);
  }

  mpz_ptr result() { return result_.get(); }

  Operands operands_;
  Mpz result_;
};

TEST_F(BigIntGmpTest, OperationsOfTwoAgree) {
  for (int i = 0; i < 20000 && !HasFailure(); ++i) {
    const BigInt b = operands_.next();
    expectOperations(operands_.next(), b.equals(BigInt()) ? BigInt(1) : b);
  }
}

// Here the estimated quotient digit is too large, up to the step that adds the divisor back, and
// the divisor's top word needs every kind of normalising shift.
TEST_F(BigIntGmpTest, DivisionsWithAWrongEstimateAgree) {
  const std::pair<const char*, const char*> rows[] = {
      {"7FFFFFFF800000000000000000000000", "800000000000000000000001"},
      {"80000000000000000000000000000003", "200000000000000000000001"},
      {"80000000FFFFFFFE00000000", "80000000FFFFFFFF"},
      {"FFFFFFFFFFFFFFFFFFFFFFFF00000000", "FFFFFFFFFFFFFFFF00000001"},
      {"30000000080000000", "10000000020000000"},
  };
  for (const auto& [dividend, divisor] : rows) {
    expectOperations(hex(dividend), hex(divisor));
  }
  const BigInt edges[] = {lowest(), highest(), BigInt(1), BigInt(-1), BigInt(1).shiftLeft(1120)};
  for (const BigInt& a : edges) {
    for (const BigInt& b : edges) {
      expectOperations(a, b);
    }
  }
}

TEST_F(BigIntGmpTest, ShiftsRootsAndSymbolsAgree) {
  for (int i = 0; i < 1500 && !HasFailure(); ++i) {
    const BigInt a = operands_.next();
    const BigInt natural = operands_.nextNatural();
    const BigInt odd = operands_.nextOdd();
    const int bits = 32 * operands_.below(75) + (i % 2 == 0 ? operands_.below(32) : 0);
    const Mpz x(a);
    mpz_mul_2exp(result(), x.get(), static_cast<mp_bitcnt_t>(bits));
    result_.wrap();
    expectResult([&] { return a.shiftLeft(bits); });
    mpz_fdiv_q_2exp(result(), x.get(), static_cast<mp_bitcnt_t>(bits));
    expectResult([&] { return a.shiftRight(bits); });
    mpz_neg(result(), x.get());
    expectResult([&] { return a.negate(); });
    mpz_sqrt(result(), Mpz(natural).get());
    expectResult([&] { return natural.sqrt(); });
    EXPECT_EQ(BigInt::jacobi(a, odd), mpz_kronecker(x.get(), Mpz(odd).get()));
  }
}

// For p = 2a + 1 and q = a (a + 1) the terms are difference, sum and product of powers of a and
// a + 1.
TEST_F(BigIntGmpTest, ModularPowersAndLucasSequencesAgree) {
  for (int i = 0; i < 80 && !HasFailure(); ++i) {
    const BigInt a = operands_.next();
    const BigInt n = operands_.next().bitOr(BigInt(i % 2 + 1));
    const BigInt e = i % 10 == 0 ? BigInt(i / 30) : operands_.nextNatural();
    // GMP's power of a negative base is from 0 up, ours has the sign that `mod` gives.
    mpz_abs(result(), Mpz(a).get());
    mpz_powm(result(), result(), Mpz(e).get(), Mpz(n).get());
    (a.lessThan(BigInt()) && e.intValue() % 2 != 0 ? mpz_neg : mpz_set)(result(), result());
    expectResult([&] { return a.modPow(e, n); });

    const BigInt root = a.mod(BigInt(1).shiftLeft(1100));
    const BigInt next = root.add(BigInt(1));
    const BigInt k = e.mod(BigInt(1).shiftLeft(100)).bitOr(BigInt(1));
    const auto terms = BigInt::lucasSequence(root.add(next), root.multiply(next),
                                             i % 2 == 0 ? k : k.negate(), n, BigInt(), i % 5);
    Mpz x(root);
    Mpz y(next);
    mpz_powm(x.get(), x.get(), Mpz(k.shiftLeft(i % 5)).get(), Mpz(n).get());
    mpz_powm(y.get(), y.get(), Mpz(k.shiftLeft(i % 5)).get(), Mpz(n).get());
    const auto expectTerm = [&](const BigInt& term, auto* combine) {
      combine(result(), y.get(), x.get());
      mpz_mod(result(), result(), Mpz(n).get());
      expectResult([&] { return term; });
    };
    expectTerm(terms.u, mpz_sub);
    expectTerm(terms.v, mpz_add);
    expectTerm(terms.qPower, mpz_mul);
  }
}

void expectPrimality(const BigInt& value) {
  const bool isPrime = mpz_probab_prime_p(Mpz(value).get(), 30) != 0;
  ASSERT_EQ(value.isProbablePrime(), isPrime) << testing::PrintToString(value);
  ASSERT_EQ(value.isProbablePrimeWithConfidence(3), isPrime) << testing::PrintToString(value);
  ASSERT_EQ(value.negate().rabinMillerTestWithConfidence(20), isPrime);
  ASSERT_TRUE(!isPrime || BigInt::lucasStrongTest(value));
}

TEST(BigIntPrimalityTest, OfSmallNumbersAgrees) {
  constexpr int kLucasPseudoprimes[] = {5459, 5777, 10877, 16109, 18971};
  for (int n = 0; n < 20000 && !testing::Test::HasFailure(); ++n) {
    const BigInt value(n);
    expectPrimality(value);
    ASSERT_EQ(BigInt::lucasStrongTest(value),
              value.isProbablePrime() || std::ranges::count(kLucasPseudoprimes, n) != 0);
  }
}

TEST(BigIntPrimalityTest, OfLargePrimesAndPseudoprimesAgrees) {
  const char* const rows[] = {
      // Primes: one whose discriminant is 41, 2^127 - 1.
      "78439", "170141183460469231731687303715884105727",
      // Strong Lucas pseudoprimes without a small factor, and strong ones to base 2.
      "8518127", "8817899", "9713027", "12327121", "3215031751", "3317044064679887385961981",
      // A Carmichael number, F5, M67, the squares of 2003 and 2^61 - 1.
      "9746347772161", "4294967297", "147573952589676412927", "4012009",
      "5316911983139663487003542222693990401"};
  for (const char* const row : rows) {
    expectPrimality(BigInt(row, 10));
  }
  EXPECT_FALSE(BigInt::lucasStrongTest(BigInt(std::end(rows)[-1], 10)));
  EXPECT_FALSE(lowest().isProbablePrime());
  EXPECT_FALSE(BigInt(9).rabinMillerTestWithConfidence(0)) << "one round at least";
  expectPrimality(BigInt(1).shiftLeft(1279).subtract(BigInt(1)));
  const BigInt prime = BigInt::generatePseudoPrimeWithBits(100, 10);
  EXPECT_TRUE(mpz_probab_prime_p(Mpz(prime).get(), 30) != 0 && prime.bitCount() == 100);
  EXPECT_EQ(BigInt::generatePseudoPrimeWithBits(2, 1), BigInt(3));
  EXPECT_EQ(BigInt::generatePseudoPrimeWithBits(1, 1), BigInt());
}

}  // namespace quillet::test
