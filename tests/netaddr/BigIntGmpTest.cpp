// BigInt against GMP over many random and extreme operands.

#include <gmpxx.h>

#include <random>
#include <vector>

#include "netaddr/BigInt.h"
#include "tests/netaddr/Samples.h"
#include "tests/support/Test.h"

namespace quillet::test {

/// What 2240 bits of two's complement keep of it.
mpz_class wrapped(mpz_class value) {
  const mpz_class period = mpz_class(1) << BigInt::kBits;
  mpz_fdiv_r_2exp(value.get_mpz_t(), value.get_mpz_t(), BigInt::kBits);
  return value < period / 2 ? value : mpz_class(value - period);
}

mpz_class theirs(const BigInt& value) {
  mpz_class result;
  mpz_import(result.get_mpz_t(), BigInt::kWords, -1, sizeof(BigInt::Word), 0, 0,
             value.getData().data());
  return wrapped(result);
}

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

/// The call's value is GMP's and as long as its words need, or it throws where GMP's does not fit.
template <class Call>
void expectResult(const mpz_class& expected, Call call) {
  BigInt ours;
  const bool hasThrown = !thrownBy([&] { ours = call(); }).empty();
  EXPECT_EQ(hasThrown, wrapped(expected) != expected);
  EXPECT_TRUE(hasThrown || theirs(ours) == expected) << testing::PrintToString(ours);
  EXPECT_EQ(ours.dataLength(), BigInt(ours.getData()).dataLength());
}

void expectOperations(const BigInt& a, const BigInt& b) {
  const auto x = theirs(a);
  const auto y = theirs(b);
  const std::pair<mpz_class, BigInt (BigInt::*)(const BigInt&) const> rows[] = {
      {x + y, &BigInt::add},    {x - y, &BigInt::subtract}, {x * y, &BigInt::multiply},
      {x / y, &BigInt::divide}, {x % y, &BigInt::mod},      {x & y, &BigInt::bitAnd},
      {x | y, &BigInt::bitOr},  {x ^ y, &BigInt::xOr},      {gcd(x, y), &BigInt::gcd}};
  for (const auto& [result, ours] : rows) {
    expectResult(result, [&, operation = ours] { return (a.*operation)(b); });
  }
  EXPECT_EQ(a.equals(b), x == y);
  EXPECT_EQ(a.greaterThan(b), x > y);
  EXPECT_EQ(a.lessThanOrEqualTo(b), x <= y);
}

TEST(BigIntGmpTest, OperationsOfTwoAgree) {
  Operands operands;
  for (int i = 0; i < 20000 && !HasFailure(); ++i) {
    const BigInt b = operands.next();
    expectOperations(operands.next(), b.equals(BigInt()) ? BigInt(1) : b);
  }
}

// Here the estimated quotient digit is too large, up to the step that adds the divisor back, and
// the divisor's top limb needs every kind of normalising shift.
TEST(BigIntGmpTest, DivisionsWithAWrongEstimateAgree) {
  const std::pair<const char*, const char*> rows[] = {
      {"7FFFFFFFFFFFFFFF800000000000000000000000000000000000000000000000",
       "800000000000000000000000000000000000000000000001"},
      {"8000000000000000000000000000000000000000000000000000000000000003",
       "200000000000000000000000000000000000000000000001"},
      {"8000000000000000FFFFFFFFFFFFFFFE0000000000000000", "8000000000000000FFFFFFFFFFFFFFFF"},
      {"FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF0000000000000000",
       "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF0000000000000001"},
      {"300000000000000008000000000000000", "100000000000000002000000000000000"}};
  for (const auto& [dividend, divisor] : rows) {
    expectOperations(number(dividend), number(divisor));
  }
  std::vector<BigInt> edges{lowest(), highest(), BigInt(1), BigInt(-1)};
  for (const int bits : {31, 32, 63, 64, 96, 128, 1120}) {
    const BigInt power = BigInt(1).shiftLeft(bits);
    edges.insert(edges.end(), {power, power.subtract(BigInt(1)), power.negate()});
  }
  for (const BigInt& a : edges) {
    for (const BigInt& b : edges) {
      expectOperations(a, b);
    }
  }
}

TEST(BigIntGmpTest, ShiftsRootsSymbolsAndTextsAgree) {
  Operands operands;
  for (int i = 0; i < 1500 && !HasFailure(); ++i) {
    const BigInt a = operands.next();
    const BigInt natural = operands.nextNatural();
    const BigInt odd = operands.nextOdd();
    const int bits = 32 * operands.below(75) + (i % 2 == 0 ? operands.below(32) : 0);
    const auto places = static_cast<mp_bitcnt_t>(bits);
    const auto x = theirs(a);
    expectResult(wrapped(x << places), [&] { return a.shiftLeft(bits); });
    expectResult(x >> places, [&] { return a.shiftRight(bits); });
    expectResult(-x, [&] { return a.negate(); });
    expectResult(sqrt(theirs(natural)), [&] { return natural.sqrt(); });
    EXPECT_EQ(BigInt::jacobi(a, odd), mpz_kronecker(x.get_mpz_t(), theirs(odd).get_mpz_t()));
    const int radix = 2 + i % 35;
    const auto text = x.get_str(-radix);  // GMP's sign for capital letters
    EXPECT_EQ(a.toStringWithRadix(radix), text);
    expectResult(x, [&] { return BigInt(text, radix); });
  }
}

mpz_class power(const mpz_class& base, const BigInt& exponent, const BigInt& modulus) {
  mpz_class result;
  mpz_powm(result.get_mpz_t(), base.get_mpz_t(), theirs(exponent).get_mpz_t(),
           theirs(modulus).get_mpz_t());
  return result;
}

// For p = 2a + 1 and q = a (a + 1) the terms are difference, sum and product of powers of a and
// a + 1.
TEST(BigIntGmpTest, ModularPowersAndLucasSequencesAgree) {
  Operands operands;
  for (int i = 0; i < 80 && !HasFailure(); ++i) {
    const BigInt a = operands.next();
    const BigInt n = operands.next().bitOr(BigInt(i % 2 + 1));
    const BigInt e = i % 10 == 0 ? BigInt(i / 30) : operands.nextNatural();
    // GMP's power of a negative base is from 0 up, ours has the sign that `mod` gives.
    const int sign = a.lessThan(BigInt()) && e.intValue() % 2 != 0 ? -1 : 1;
    expectResult(sign * power(abs(theirs(a)), e, n), [&] { return a.modPow(e, n); });

    const BigInt root = a.mod(BigInt(1).shiftLeft(1100));
    const BigInt next = root.add(BigInt(1));
    const BigInt k = e.mod(BigInt(1).shiftLeft(100)).bitOr(BigInt(1));
    const auto terms = BigInt::lucasSequence(root.add(next), root.multiply(next),
                                             i % 2 == 0 ? k : k.negate(), n, BigInt(), i % 5);
    const auto x = power(theirs(root), k.shiftLeft(i % 5), n);
    const auto y = power(theirs(next), k.shiftLeft(i % 5), n);
    const std::pair<BigInt, mpz_class> rows[] = {
        {terms.u, y - x}, {terms.v, y + x}, {terms.qPower, x * y}};
    for (auto [term, expected] : rows) {
      mpz_mod(expected.get_mpz_t(), expected.get_mpz_t(), theirs(n).get_mpz_t());
      expectResult(expected, [&, value = term] { return value; });
    }
  }
}

void expectPrimality(const BigInt& value) {
  const bool isPrime = mpz_probab_prime_p(theirs(value).get_mpz_t(), 30) != 0;
  ASSERT_EQ(value.isProbablePrime(), isPrime) << testing::PrintToString(value);
  const int confidence = isPrime ? 3 : 20;  // of three rounds a composite passes each now and then
  ASSERT_EQ(value.isProbablePrimeWithConfidence(confidence), isPrime)
      << testing::PrintToString(value);
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
  EXPECT_TRUE(mpz_probab_prime_p(theirs(prime).get_mpz_t(), 30) != 0 && prime.bitCount() == 100);
  for (int draw = 0; draw < 20; ++draw) {
    EXPECT_EQ(BigInt::generatePseudoPrimeWithBits(2, 1), BigInt(3)) << "2 is not drawn";
  }
  EXPECT_EQ(BigInt::generatePseudoPrimeWithBits(1, 1), BigInt());
}

}  // namespace quillet::test
