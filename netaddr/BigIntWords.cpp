#include "netaddr/BigIntWords.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace quillet::words {

View trimmed(View limbs) {
  std::size_t size = limbs.size();
  while (size > 0 && limbs[size - 1] == 0) {
    --size;
  }
  return limbs.first(size);
}

int compare(View a, View b) {
  if (a.size() != b.size()) {
    return a.size() < b.size() ? -1 : 1;
  }
  for (std::size_t i = a.size(); i-- > 0;) {
    if (a[i] != b[i]) {
      return a[i] < b[i] ? -1 : 1;
    }
  }
  return 0;
}

int bitLength(View limbs) {
  if (limbs.empty()) {
    return 0;
  }
  return static_cast<int>(limbs.size()) * kLimbBits - std::countl_zero(limbs.back());
}

int trailingZeros(View limbs) {
  for (std::size_t i = 0; i < limbs.size(); ++i) {
    if (limbs[i] != 0) {
      return static_cast<int>(i) * kLimbBits + std::countr_zero(limbs[i]);
    }
  }
  return 0;
}

Limb add(Buffer sum, View addend) {
  DoubleLimb carry = 0;
  for (std::size_t i = 0; i < addend.size(); ++i) {
    carry += DoubleLimb{sum[i]} + addend[i];
    sum[i] = static_cast<Limb>(carry);
    carry >>= kLimbBits;
  }
  for (std::size_t i = addend.size(); carry != 0 && i < sum.size(); ++i) {
    carry = ++sum[i] == 0 ? 1 : 0;
  }
  return static_cast<Limb>(carry);
}

Limb subtract(Buffer difference, View subtrahend) {
  DoubleLimb borrow = 0;
  for (std::size_t i = 0; i < subtrahend.size(); ++i) {
    const DoubleLimb word = DoubleLimb{difference[i]} - subtrahend[i] - borrow;
    difference[i] = static_cast<Limb>(word);
    borrow = word >> (2 * kLimbBits - 1);
  }
  for (std::size_t i = subtrahend.size(); borrow != 0 && i < difference.size(); ++i) {
    borrow = difference[i]-- == 0 ? 1 : 0;
  }
  return static_cast<Limb>(borrow);
}

void negate(Buffer limbs) {
  DoubleLimb carry = 1;
  for (Limb& word : limbs) {
    carry += static_cast<Limb>(~word);
    word = static_cast<Limb>(carry);
    carry >>= kLimbBits;
  }
}

Limb addProduct(Buffer sum, View a, Limb factor) {
  DoubleLimb carry = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    carry += DoubleLimb{a[i]} * factor + sum[i];
    sum[i] = static_cast<Limb>(carry);
    carry >>= kLimbBits;
  }
  return static_cast<Limb>(carry);
}

Limb subtractProduct(Buffer difference, View a, Limb factor) {
  DoubleLimb borrow = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const DoubleLimb product = DoubleLimb{a[i]} * factor + borrow;
    const auto low = static_cast<Limb>(product);
    borrow = (product >> kLimbBits) + (difference[i] < low ? 1 : 0);
    difference[i] -= low;
  }
  return static_cast<Limb>(borrow);
}

Limb multiplyAdd(Buffer limbs, Limb factor, Limb addend) {
  DoubleLimb carry = addend;
  for (Limb& word : limbs) {
    carry += DoubleLimb{word} * factor;
    word = static_cast<Limb>(carry);
    carry >>= kLimbBits;
  }
  return static_cast<Limb>(carry);
}

void multiply(Buffer product, View a, View b) {
  std::ranges::fill(product, 0);
  for (std::size_t i = 0; i < b.size(); ++i) {
    product[i + a.size()] = addProduct(product.subspan(i), a, b[i]);
  }
}

void square(Buffer product, View a) {
  std::ranges::fill(product, 0);
  for (std::size_t i = 0; i + 1 < a.size(); ++i) {
    product[i + a.size()] = addProduct(product.subspan(2 * i + 1), a.subspan(i + 1), a[i]);
  }
  DoubleLimb carry = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const DoubleLimb diagonal = DoubleLimb{a[i]} * a[i];
    carry += (DoubleLimb{product[2 * i]} << 1) + static_cast<Limb>(diagonal);
    product[2 * i] = static_cast<Limb>(carry);
    carry >>= kLimbBits;
    carry += (DoubleLimb{product[2 * i + 1]} << 1) + (diagonal >> kLimbBits);
    product[2 * i + 1] = static_cast<Limb>(carry);
    carry >>= kLimbBits;
  }
}

template <class Unit>
void shiftLeft(std::span<Unit> units, std::size_t bits) {
  constexpr std::size_t width = std::numeric_limits<Unit>::digits;
  const std::size_t whole = std::min(bits / width, units.size());
  const std::size_t part = bits % width;
  for (std::size_t i = units.size(); i-- > whole;) {
    const Unit next = part != 0 && i > whole ? units[i - whole - 1] >> (width - part) : 0;
    units[i] = (units[i - whole] << part) | next;
  }
  std::ranges::fill(units.first(whole), 0);
}

template <class Unit>
void shiftRight(std::span<Unit> units, std::size_t bits) {
  constexpr std::size_t width = std::numeric_limits<Unit>::digits;
  const std::size_t whole = std::min(bits / width, units.size());
  const std::size_t part = bits % width;
  const std::size_t kept = units.size() - whole;
  for (std::size_t i = 0; i < kept; ++i) {
    const Unit next = part != 0 && i + 1 < kept ? units[i + whole + 1] << (width - part) : 0;
    units[i] = (units[i + whole] >> part) | next;
  }
  std::ranges::fill(units.subspan(kept), 0);
}

template void shiftLeft(std::span<std::uint32_t>, std::size_t);
template void shiftLeft(Buffer, std::size_t);
template void shiftRight(std::span<std::uint32_t>, std::size_t);
template void shiftRight(Buffer, std::size_t);

}  // namespace quillet::words
