#!/usr/bin/env python3
"""Writes bigint_vectors.txt: what Python's integers say about operations of BigInt.

Run it anywhere; the output is the same each time:

    tests/netaddr/make_bigint_vectors.py > tests/netaddr/bigint_vectors.txt

One line a case: the operation, its operands, "=", and the results or the exception's name and reason. All
numbers are hexadecimal with a sign.
"""

import random

BITS = 2240
LOW, HIGH = -(1 << (BITS - 1)), (1 << (BITS - 1)) - 1
source = random.Random(20)


EXTREMES = [0, 1, -1, 2, -2, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 1 << 32, -(1 << 31), (1 << 63) - 1,
            -(1 << 63), (1 << 64) - 1, HIGH, HIGH - 1, LOW, LOW + 1, -HIGH, 1 << 1119, (1 << 1120) - 1]

# A divisor and dividend each at which the estimated quotient digit is too large, up to the step that adds the
# divisor back, and divisors whose top word needs every kind of normalising shift.
DIVISIONS = [
    (0x7FFFFFFF_80000000_00000000_00000000, 0x80000000_00000000_00000001),
    (0x80000000_00000000_00000000_00000003, 0x20000000_00000000_00000001),
    (0x7FFFFFFF_FFFFFFFF_00000000_00000000, 0x80000000_00000000_FFFFFFFF),
    (0x80000000_FFFFFFFE_00000000, 0x80000000_FFFFFFFF),
    (0xFFFFFFFF_FFFFFFFF_FFFFFFFF_00000000, 0xFFFFFFFF_FFFFFFFF_00000001),
    (0x00000003_00000000_80000000, 0x00000001_00000000_20000000),
    (HIGH, 1 << 32), (HIGH, 1 << 64 | 1), (HIGH, HIGH), (HIGH - 1, HIGH), (LOW, HIGH),
    (LOW, LOW), (LOW, 1), (LOW, 2), (LOW, -2), (LOW, -1), (HIGH, -1), (1, LOW), (LOW + 1, LOW),
    (HIGH, 0xFFFFFFFF), (LOW, 0xFFFFFFFF), (HIGH, 1 << 1120), (0, HIGH), (7, -2), (-7, 2), (-7, -2),
]


def number(most_bits=BITS - 1):
    bits = min(source.choice([8, 32, 33, 64, 65, 128, 300, 1024, 2239]), most_bits)
    value = source.getrandbits(source.randint(1, bits))
    if source.random() < 0.2:  # long runs of ones and zeros
        value = (1 << bits) - 1 - (((1 << bits // 3) - 1) << source.randrange(bits // 2 + 1))
    return -value if source.random() < 0.4 else value


def pairs(count):
    chosen = [(a, b) for a in EXTREMES for b in EXTREMES if source.random() < 0.03]
    return chosen + [(number(), number()) for _ in range(count)]


def write(operation, operands, *results):
    print(operation, *(format(item, "X") for item in operands), "=",
          *(item if isinstance(item, str) else format(item, "X") for item in results))


def fitting(value, reason):
    return value if LOW <= value <= HIGH else "ArithmeticException: " + reason


def with_sign_of(value, a):
    return -value if a < 0 else value


def product(a, b):
    return fitting(a * b, "Multiplication overflow." if abs(a * b).bit_length() > BITS else "overflow.")


def wrapped(value):
    value &= (1 << BITS) - 1
    return value - (1 << BITS) if value >> (BITS - 1) else value


def power(base, exponent, modulus):
    return with_sign_of(pow(abs(base), exponent, abs(modulus)), base if exponent & 1 else 1)


def lucas(p, q, index, n):
    """U, V and q^index by powers of the matrix of the recurrence."""
    def times(a, b):
        return [sum(a[i // 2 * 2 + k] * b[k * 2 + i % 2] for k in (0, 1)) % n for i in range(4)]
    result, base, rest = [1, 0, 0, 1], [p, -q, 1, 0], index
    while rest:
        if rest & 1:
            result = times(result, base)
        base = times(base, base)
        rest >>= 1
    u, following = result[2] % n, result[0] % n
    return u, (2 * following - p * u) % n, pow(q, index, n)


for a, b in pairs(9):
    write("add", (a, b), fitting(a + b, "Overflow"))
    write("subtract", (a, b), fitting(a - b, "Overflow"))
for a, b in pairs(10) + [(1 << 1120, 1 << 1119), (-(1 << 1120), 1 << 1119), (1 << 1120, (1 << 1120) - 1), (LOW, LOW)]:
    write("multiply", (a, b), product(a, b))
for a, b in DIVISIONS + [(number(), number() or 1) for _ in range(16)]:
    write("divide", (a, b), fitting(with_sign_of(abs(a) // abs(b), a * b), "Overflow in negation."))
    write("mod", (a, b), with_sign_of(abs(a) % abs(b), a))
for a, b in pairs(4):
    write("bits", (a, b), a & b, a | b, a ^ b, ~a)
for a in [1, -1, HIGH, LOW, number(), number(), number(), number()]:
    for amount in source.sample([0, 1, 31, 32, 33, 63, 1000, 2207, 2208, 2238, 2239, 2240, 5000], 3):
        write("shift", (a, amount), wrapped(a << amount), a >> amount)
for modulus in [1, 2, 3, 1 << 32, (1 << 32) - 1, 1 << 64, 1 << 1120, HIGH, LOW, HIGH - 1, LOW + 1]:
    base, exponent = number(), abs(number(300))
    write("modPow", (base, exponent, modulus), power(base, exponent, modulus))
for base in [0, 1, -1, HIGH, LOW]:
    for exponent in [0, 1, 2, 0x1FFFFFFFF]:
        write("modPow", (base, exponent, -1000000007), power(base, exponent, -1000000007))
for n in [1, 2, 3, 97, 1 << 32, (1 << 64) - 1, HIGH, HIGH - 1, abs(number(1024)) + 2, abs(number(1024)) + 2]:
    p, q, k, s = number(128), number(128), abs(number(128)) | 1, source.randrange(5)
    write("lucas", (p, q, k, s, n), *lucas(p, q, k << s, n))
