#!/usr/bin/env python3
"""Writes address_vectors.txt: what Python's ipaddress module says about addresses and subnets.

Run it anywhere; the output is the same each time:

    tests/netaddr/make_address_vectors.py > tests/netaddr/address_vectors.txt

    4 or 6  text with prefix  correct form  canonical form  value  first  last  reversed prefix
    in      address  subnet   1 or 0
"""

import ipaddress
import random

source = random.Random(1884)

TEXTS6 = [
    "::/0", "::/128", "::1/128", "1::/64", "2001:db8:0:0:1:0:0:1/64", "2001:db8:0:1:1:1:1:1/48",
    "0:0:1:0:0:0:1:0/1", "1:0:0:1:0:0:0:1/127", "0:1:0:1:0:1:0:1/20", "1:2:3:4:5:6:7:8/63",
    "0:2:3:4:5:6:7:8/4", "1:2:3:4:5:6:7:0/125", "0:0:3:4:5:6:0:0/8", "1::8/33", "1:2:3:4:5:6:7::/96",
    "::2:3:4:5:6:7:8/12", "FE80::A:bCd/10", "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/3",
    "0000:0000:0000:0000:0000:0000:0000:0000/128", "2001:0DB8:00A0::000f/44",
]
TEXTS4 = ["0.0.0.0/0", "255.255.255.255/32", "255.255.255.255/0", "10.0.0.5/8", "192.168.1.1/24",
          "127.0.0.1/32", "1.2.3.4/1", "172.31.255.254/12", "203.0.113.77/27", "8.8.8.8/31"]


def random6():
    groups = [source.choice([0, 0, 0, 1, 0xFFFF, source.getrandbits(16), source.getrandbits(4)]) for _ in range(8)]
    return ":".join(format(group, source.choice(["x", "X", "04x"])) for group in groups) + f"/{source.randint(0, 128)}"


def random4():
    return f"{ipaddress.IPv4Address(source.getrandbits(32))}/{source.randint(0, 32)}"


def write(text):
    interface = ipaddress.ip_interface(text)
    ip, network, version = interface.ip, interface.network, interface.version
    labels = ip.reverse_pointer.split(".")
    if version == 6:
        labels = labels[32 - network.prefixlen // 4:]
    print(version, text, ip.compressed, ip.exploded, format(int(ip), "X"), network.network_address,
          network.broadcast_address, ".".join(labels) + ".")


def neighbour(text):
    """A subnet near an address: often around it, often just beside."""
    interface = ipaddress.ip_interface(text)
    width = interface.max_prefixlen
    prefix = min(width, max(0, interface.network.prefixlen + source.randint(-6, 3)))
    value = int(interface.ip) ^ (source.getrandbits(1) << (width - source.randint(1, width)))
    return f"{type(interface.ip)(value)}/{prefix}"


def write_membership(inner, outer):
    networks = [ipaddress.ip_network(text, strict=False) for text in (inner, outer)]
    print("in", inner, outer, int(networks[0].subnet_of(networks[1])))


def write_memberships(text):
    """In a subnet nearby, and its own subnet's last address in that subnet and in the first half of it."""
    write_membership(text, neighbour(text))
    network = ipaddress.ip_interface(text).network
    last = f"{network.broadcast_address}"
    write_membership(last, f"{network}")
    write_membership(last, f"{network.network_address}/{min(network.prefixlen + 1, network.max_prefixlen)}")


for text in TEXTS4 + [random4() for _ in range(25)] + TEXTS6 + [random6() for _ in range(60)]:
    write(text)
for text in TEXTS4 + TEXTS6 + [random4() for _ in range(20)] + [random6() for _ in range(20)]:
    write_memberships(text)
