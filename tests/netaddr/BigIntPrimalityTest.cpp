#include <gtest/gtest.h>

#include <vector>

#include "netaddr/BigInt.h"
#include "tests/netaddr/BigIntSamples.h"
#include "tests/netaddr/Thrown.h"

namespace quillet {
namespace {

constexpr int kSieved = 20000;

std::vector<bool> sievedPrimes() {
  std::vector<bool> prime(kSieved, true);
  prime[0] = prime[1] = false;
  for (std::size_t i = 2; i * i < prime.size(); ++i) {
    for (std::size_t multiple = i * i; prime[i] && multiple < prime.size(); multiple += i) {
      prime[multiple] = false;
    }
  }
  return prime;
}

TEST(BigIntPrimalityTest, AgreesWithASieve) {
  const std::vector<bool> prime = sievedPrimes();
  for (int n = 0; n < kSieved; ++n) {
    const bool expected = prime[static_cast<std::size_t>(n)];
    ASSERT_EQ(BigInt(n).isProbablePrime(), expected) << n;
    ASSERT_EQ(BigInt(-n).isProbablePrime(), expected) << n;
    ASSERT_EQ(BigInt(n).isProbablePrimeWithConfidence(20), expected) << n;
    ASSERT_EQ(BigInt(n).rabinMillerTestWithConfidence(20), expected) << n;
    ASSERT_TRUE(!expected || BigInt::lucasStrongTest(BigInt(n))) << n;
  }
}

TEST(BigIntPrimalityTest, KnowsLargePrimes) {
  const std::vector<BigInt> primes = {
      BigInt("170141183460469231731687303715884105727", 10),  // 2^127 - 1
      BigInt("115792089237316195423570985008687907853269984665640564039457584007908834671663", 10),
      BigInt(1).shiftLeft(521).subtract(BigInt(1)),
      BigInt(1).shiftLeft(1279).subtract(BigInt(1)),
      BigInt(1).shiftLeft(2203).subtract(BigInt(1)),
  };
  for (const BigInt& prime : primes) {
    EXPECT_TRUE(prime.isProbablePrime());
    EXPECT_TRUE(prime.negate().isProbablePrime());
    EXPECT_TRUE(prime.isProbablePrimeWithConfidence(3));
  }
}

TEST(BigIntPrimalityTest, SeesThroughPseudoprimes) {
  const char* const composites[] = {
      // Carmichael numbers
      "561", "1105", "1729", "2465", "2821", "6601", "8911", "10585", "41041", "825265",
      "321197185", "5394826801", "232250619601", "9746347772161", "1436697831295441",
      "60977817398996785",
      // strong pseudoprimes to base 2
      "2047", "3277", "4033", "4681", "8321", "15841", "29341", "42799", "49141", "52633", "65281",
      "74665", "80581", "85489", "88357", "90751", "1082401", "1194649", "12327121",
      // to the first 2, 4, 9, 12 and 13 primes
      "1373653", "3215031751", "3825123056546413051", "318665857834031151167461",
      "3317044064679887385961981",
      // strong Lucas pseudoprimes
      "5459", "5777", "10877", "16109", "18971", "22499", "24569", "25199", "40309", "58519",
      // F5, M67, and squares of primes above 2000
      "4294967297", "147573952589676412927", "4012009", "340282366920938463463374607431768211457"};
  for (const char* const text : composites) {
    const BigInt composite(text, 10);
    EXPECT_FALSE(composite.isProbablePrime()) << text;
    EXPECT_FALSE(composite.isProbablePrimeWithConfidence(30)) << text;
    EXPECT_FALSE(composite.rabinMillerTestWithConfidence(30)) << text;
  }
  EXPECT_FALSE(lowest().isProbablePrime());
  EXPECT_FALSE(highest().isProbablePrime());
}

TEST(BigIntPrimalityTest, SymbolsAndSequencesRefuseTheEven) {
  EXPECT_EQ(thrownBy([] { (void)BigInt::jacobi(BigInt(3), BigInt(4)); }),
            "ArgumentException: Jacobi defined only for odd integers.");
  EXPECT_EQ(thrownBy([] { (void)BigInt::jacobi(BigInt(3), BigInt(0)); }),
            "ArgumentException: Jacobi defined only for odd integers.");
  EXPECT_EQ(thrownBy([] {
              (void)BigInt::lucasSequence(BigInt(1), BigInt(-1), BigInt(4), BigInt(7), BigInt(), 0);
            }),
            "ArgumentException: Argument k must be odd.");
}

}  // namespace
}  // namespace quillet
