#include <gtest/gtest.h>

#include <vector>

#include "netaddr/BigInt.h"
#include "tests/netaddr/BigIntSamples.h"

namespace quillet {
namespace {

TEST(BigIntPrimalityTest, AgreesWithASieve) {
  std::vector<bool> prime(20000, true);
  prime[0] = prime[1] = false;
  for (std::size_t n = 0; n < prime.size(); ++n) {
    for (std::size_t multiple = n * n; prime[n] && multiple < prime.size(); multiple += n) {
      prime[multiple] = false;
    }
    const BigInt value(static_cast<std::int64_t>(n));
    ASSERT_EQ(value.isProbablePrime(), prime[n]) << n;
    ASSERT_EQ(value.negate().isProbablePrime(), prime[n]) << n;
    ASSERT_EQ(value.isProbablePrimeWithConfidence(20), prime[n]) << n;
    ASSERT_EQ(value.rabinMillerTestWithConfidence(20), prime[n]) << n;
    ASSERT_TRUE(!prime[n] || BigInt::lucasStrongTest(value)) << n;
  }
}

TEST(BigIntPrimalityTest, KnowsLargePrimes) {
  const std::vector<BigInt> primes = {
      hex("7FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"),  // 2^127 - 1
      hex("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFEFFFFFC2F"),
      BigInt(1).shiftLeft(521).subtract(BigInt(1)),
      BigInt(1).shiftLeft(2203).subtract(BigInt(1)),
      BigInt::generatePseudoPrimeWithBits(100, 10),
  };
  for (const BigInt& prime : primes) {
    EXPECT_TRUE(prime.isProbablePrime());
    EXPECT_TRUE(prime.isProbablePrimeWithConfidence(3));
  }
  EXPECT_EQ(primes.back().bitCount(), 100);
}

TEST(BigIntPrimalityTest, SeesThroughPseudoprimes) {
  const char* const composites[] = {
      // Carmichael numbers
      "561", "1105", "1729", "825265", "321197185", "5394826801", "232250619601", "9746347772161",
      "1436697831295441", "60977817398996785",
      // strong pseudoprimes to base 2
      "2047", "3277", "4033", "4681", "8321", "15841", "90751", "1082401", "1194649", "12327121",
      // to the first 2, 4, 9, 12 and 13 primes
      "1373653", "3215031751", "3825123056546413051", "318665857834031151167461",
      "3317044064679887385961981",
      // strong Lucas pseudoprimes, F5, M67, and squares of primes above 2000
      "5459", "5777", "10877", "16109", "18971", "4294967297", "147573952589676412927", "4012009",
      "340282366920938463463374607431768211457"};
  for (const char* const text : composites) {
    const BigInt composite(text, 10);
    EXPECT_FALSE(composite.isProbablePrime()) << text;
    EXPECT_FALSE(composite.isProbablePrimeWithConfidence(30)) << text;
    EXPECT_FALSE(composite.rabinMillerTestWithConfidence(30)) << text;
  }
  EXPECT_FALSE(lowest().isProbablePrime());
}

}  // namespace
}  // namespace quillet
