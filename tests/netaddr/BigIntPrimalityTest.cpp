#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "netaddr/BigInt.h"
#include "tests/netaddr/BigIntSamples.h"

namespace quillet {
namespace {

TEST(BigIntPrimalityTest, AgreesWithASieve) {
  constexpr int kLucasPseudoprimes[] = {5459, 5777, 10877, 16109, 18971};
  std::vector<bool> prime(20000, true);
  prime[0] = prime[1] = false;
  for (std::size_t n = 0; n < prime.size(); ++n) {
    for (std::size_t multiple = n * n; prime[n] && multiple < prime.size(); multiple += n) {
      prime[multiple] = false;
    }
    const BigInt value(static_cast<std::int64_t>(n));
    ASSERT_EQ(value.isProbablePrime(), prime[n]) << n;
    ASSERT_EQ(value.isProbablePrimeWithConfidence(1), prime[n]) << n;
    ASSERT_EQ(value.negate().rabinMillerTestWithConfidence(20), prime[n]) << n;
    ASSERT_EQ(BigInt::lucasStrongTest(value),
              prime[n] || std::ranges::count(kLucasPseudoprimes, n) != 0)
        << n;
  }
}

TEST(BigIntPrimalityTest, KnowsPrimes) {
  const std::vector<BigInt> primes = {
      BigInt(78439),                            // its discriminant is 41
      hex("7FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"),  // 2^127 - 1
      hex("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFEFFFFFC2F"),
      BigInt(1).shiftLeft(1279).subtract(BigInt(1)),
      BigInt::generatePseudoPrimeWithBits(100, 10),
  };
  for (const BigInt& prime : primes) {
    EXPECT_TRUE(prime.negate().isProbablePrime() && prime.isProbablePrimeWithConfidence(3));
    EXPECT_TRUE(BigInt::lucasStrongTest(prime));
  }
  EXPECT_EQ(primes.back().bitCount(), 100);
  EXPECT_EQ(BigInt::generatePseudoPrimeWithBits(2, 1), BigInt(3));
  EXPECT_EQ(BigInt::generatePseudoPrimeWithBits(1, 1), BigInt());
}

TEST(BigIntPrimalityTest, SeesThroughPseudoprimes) {
  const char* const composites[] = {
      // strong Lucas pseudoprimes without a small factor, and strong ones to base 2
      "8518127", "8817899", "9713027", "12327121", "3215031751", "3317044064679887385961981",
      // Carmichael number, F5, M67, the squares of 2003 and 2^61 - 1
      "9746347772161", "4294967297", "147573952589676412927", "4012009",
      "5316911983139663487003542222693990401"};
  for (const char* const text : composites) {
    const BigInt composite(text, 10);
    EXPECT_FALSE(composite.isProbablePrime() || composite.isProbablePrimeWithConfidence(30))
        << text;
  }
  EXPECT_FALSE(BigInt::lucasStrongTest(BigInt(composites[10], 10)));
  EXPECT_FALSE(lowest().isProbablePrime());
  EXPECT_FALSE(BigInt(9).rabinMillerTestWithConfidence(0)) << "one round at least";
}

}  // namespace
}  // namespace quillet
