// BigInt beside GMP on the same operands. GMP keeps its results in place, BigInt returns new
// values.

#include <benchmark/benchmark.h>
#include <gmpxx.h>

#include <string>

#include "netaddr/BigInt.h"

namespace quillet {
namespace {

/// A random odd number of that many bits.
BigInt randomOdd(int bits) {
  BigInt value;
  value.getRandomBits(bits);
  return value.bitOr(BigInt(1));
}

/// The same number for GMP.
mpz_class theirs(const BigInt& value) { return mpz_class(value.toStringWithRadix(16), 16); }

void BM_multiply(benchmark::State& state) {
  const BigInt a = randomOdd(static_cast<int>(state.range()));
  const BigInt b = randomOdd(static_cast<int>(state.range()));
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(a.multiply(b));
  }
}

void BM_multiplyGmp(benchmark::State& state) {
  mpz_class a = theirs(randomOdd(static_cast<int>(state.range())));
  mpz_class b = theirs(randomOdd(static_cast<int>(state.range())));
  mpz_class product;
  for ([[maybe_unused]] auto _ : state) {
    mpz_mul(product.get_mpz_t(), a.get_mpz_t(), b.get_mpz_t());
    benchmark::DoNotOptimize(product);
  }
}

/// A dividend of that many bits by a divisor of half as many.
void BM_divide(benchmark::State& state) {
  const BigInt a = randomOdd(static_cast<int>(state.range()));
  const BigInt b = randomOdd(static_cast<int>(state.range()) / 2);
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(a.divide(b));
  }
}

void BM_divideGmp(benchmark::State& state) {
  mpz_class a = theirs(randomOdd(static_cast<int>(state.range())));
  mpz_class b = theirs(randomOdd(static_cast<int>(state.range()) / 2));
  mpz_class quotient;
  for ([[maybe_unused]] auto _ : state) {
    mpz_tdiv_q(quotient.get_mpz_t(), a.get_mpz_t(), b.get_mpz_t());
    benchmark::DoNotOptimize(quotient);
  }
}

void BM_modPow(benchmark::State& state) {
  const int bits = static_cast<int>(state.range());
  const BigInt modulus = randomOdd(bits);
  const BigInt base = randomOdd(bits - 1);
  const BigInt exponent = randomOdd(bits);
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(base.modPow(exponent, modulus));
  }
}

void BM_modPowGmp(benchmark::State& state) {
  const int bits = static_cast<int>(state.range());
  mpz_class modulus = theirs(randomOdd(bits));
  mpz_class base = theirs(randomOdd(bits - 1));
  mpz_class exponent = theirs(randomOdd(bits));
  mpz_class power;
  for ([[maybe_unused]] auto _ : state) {
    mpz_powm(power.get_mpz_t(), base.get_mpz_t(), exponent.get_mpz_t(), modulus.get_mpz_t());
    benchmark::DoNotOptimize(power);
  }
}

void BM_toStringWithRadix(benchmark::State& state) {
  const BigInt value = randomOdd(static_cast<int>(state.range(0)));
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(value.toStringWithRadix(static_cast<int>(state.range(1))));
  }
}

void BM_toStringGmp(benchmark::State& state) {
  mpz_class value = theirs(randomOdd(static_cast<int>(state.range(0))));
  std::string text(BigInt::kBits + 2, '\0');
  for ([[maybe_unused]] auto _ : state) {
    mpz_get_str(text.data(), static_cast<int>(-state.range(1)), value.get_mpz_t());
    benchmark::DoNotOptimize(text);
  }
}

// The product of two numbers of 2,048 bits does not fit: multiplication ends at 1,024.
BENCHMARK(BM_multiply)->Arg(512)->Arg(1024);
BENCHMARK(BM_multiplyGmp)->Arg(512)->Arg(1024);
BENCHMARK(BM_divide)->Arg(512)->Arg(1024)->Arg(2048);
BENCHMARK(BM_divideGmp)->Arg(512)->Arg(1024)->Arg(2048);
BENCHMARK(BM_modPow)->Arg(512)->Arg(1024)->Arg(2048)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_modPowGmp)->Arg(512)->Arg(1024)->Arg(2048)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_toStringWithRadix)->ArgsProduct({{128, 1024, 2048}, {2, 10, 16}});
BENCHMARK(BM_toStringGmp)->ArgsProduct({{128, 1024, 2048}, {2, 10, 16}});

}  // namespace
}  // namespace quillet
