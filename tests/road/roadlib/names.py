"""The addresses that the demo filter makes from a name."""

import ipaddress


def fnv1a(name):
    """FNV-1a, 64 bits, of the lower-cased name without its final dot."""
    value = 0xCBF29CE484222325
    for byte in name.rstrip(".").lower().encode():
        value = (value ^ byte) * 0x100000001B3 % (1 << 64)
    return value


def ipv4(name):
    """In 198.18.0.0/15: the low 17 bits of the hash."""
    return str(ipaddress.IPv4Address(int(ipaddress.IPv4Address("198.18.0.0")) + fnv1a(name) % (1 << 17)))


def ipv6(name):
    """In 2001:db8::/64: the whole hash."""
    return str(ipaddress.IPv6Address(int(ipaddress.IPv6Address("2001:db8::")) + fnv1a(name)))
