// BigInt beside GMP on the same operands. GMP keeps its results in place, BigInt returns new
// values.

#include <benchmark/benchmark.h>
#include <gmp.h>

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

class Mpz {
 public:
  Mpz() { mpz_init(value_); }
  explicit Mpz(const BigInt& value) : Mpz() {
    mpz_import(value_, BigInt::kWords, -1, sizeof(BigInt::Word), 0, 0, value.getData().data());
  }
  Mpz(const Mpz&) = delete;
  Mpz& operator=(const Mpz&) = delete;
  ~Mpz() { mpz_clear(value_); }

  [[nodiscard]] mpz_ptr get() { return value_; }

 private:
  mpz_t value_;
};

void BM_multiply(benchmark::State& state) {
  const BigInt a = randomOdd(static_cast<int>(state.range()));
  const BigInt b = randomOdd(static_cast<int>(state.range()));
  for (auto _ : state) {
    benchmark::DoNotOptimize(a.multiply(b));
  }
}

void BM_multiplyGmp(benchmark::State& state) {
  Mpz a(randomOdd(static_cast<int>(state.range())));
  Mpz b(randomOdd(static_cast<int>(state.range())));
  Mpz product;
  for (auto _ : state) {
    mpz_mul(product.get(), a.get(), b.get());
    benchmark::DoNotOptimize(product);
  }
}

/// A dividend of that many bits by a divisor of half as many.
void BM_divide(benchmark::State& state) {
  const BigInt a = randomOdd(static_cast<int>(state.range()));
  const BigInt b = randomOdd(static_cast<int>(state.range()) / 2);
  for (auto _ : state) {
    benchmark::DoNotOptimize(a.divide(b));
  }
}

void BM_divideGmp(benchmark::State& state) {
  Mpz a(randomOdd(static_cast<int>(state.range())));
  Mpz b(randomOdd(static_cast<int>(state.range()) / 2));
  Mpz quotient;
  for (auto _ : state) {
    mpz_tdiv_q(quotient.get(), a.get(), b.get());
    benchmark::DoNotOptimize(quotient);
  }
}

void BM_modPow(benchmark::State& state) {
  const int bits = static_cast<int>(state.range());
  const BigInt modulus = randomOdd(bits);
  const BigInt base = randomOdd(bits - 1);
  const BigInt exponent = randomOdd(bits);
  for (auto _ : state) {
    benchmark::DoNotOptimize(base.modPow(exponent, modulus));
  }
}

void BM_modPowGmp(benchmark::State& state) {
  const int bits = static_cast<int>(state.range());
  Mpz modulus(randomOdd(bits));
  Mpz base(randomOdd(bits - 1));
  Mpz exponent(randomOdd(bits));
  Mpz power;
  for (auto _ : state) {
    mpz_powm(power.get(), base.get(), exponent.get(), modulus.get());
    benchmark::DoNotOptimize(power);
  }
}

void BM_toStringWithRadix(benchmark::State& state) {
  const BigInt value = randomOdd(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(value.toStringWithRadix(static_cast<int>(state.range(1))));
  }
}

void BM_toStringGmp(benchmark::State& state) {
  Mpz value(randomOdd(static_cast<int>(state.range(0))));
  std::string text(BigInt::kBits + 2, '\0');
  for (auto _ : state) {
    mpz_get_str(text.data(), static_cast<int>(-state.range(1)), value.get());
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
