#pragma once

#include <gmp.h>

#include "netaddr/BigInt.h"

namespace quillet::test {

/// A number of GMP, the other opinion on what BigInt says.
class Mpz {
 public:
  Mpz() { mpz_init(value_); }
  explicit Mpz(const BigInt& value) : Mpz() {
    mpz_import(value_, BigInt::kWords, -1, sizeof(BigInt::Word), 0, 0, value.getData().data());
    wrap();
  }
  Mpz(const Mpz&) = delete;
  Mpz(Mpz&&) = delete;
  Mpz& operator=(const Mpz&) = delete;
  Mpz& operator=(Mpz&&) = delete;
  ~Mpz() { mpz_clear(value_); }

  [[nodiscard]] mpz_ptr get() { return value_; }
  [[nodiscard]] mpz_srcptr get() const { return value_; }

  /// Whether a BigInt holds it.
  [[nodiscard]] bool fits() const {
    Mpz wrapped;
    mpz_set(wrapped.value_, value_);
    wrapped.wrap();
    return mpz_cmp(wrapped.value_, value_) == 0;
  }

  /// Makes it what 2240 bits of two's complement keep of it.
  void wrap() {
    mpz_fdiv_r_2exp(value_, value_, BigInt::kBits);
    if (mpz_tstbit(value_, BigInt::kBits - 1) != 0) {
      Mpz lost;
      mpz_setbit(lost.value_, BigInt::kBits);
      mpz_sub(value_, value_, lost.value_);
    }
  }

 private:
  mpz_t value_;
};

}  // namespace quillet::test
