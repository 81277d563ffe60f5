"""Packets with a sender of one's choice, as an attacker or a router makes them; for a network of the test's own."""

import socket
import struct

from roadlib.processes import family_of


def _checksum(data):
    total = sum(struct.unpack(f"!{len(data) // 2}H", data))
    while total >> 16:
        total = (total & 0xFFFF) + (total >> 16)
    return ~total & 0xFFFF


def send_datagram(source, destination, payload):
    """One UDP datagram; `source` is an endpoint of this machine's addresses, which another socket may hold."""
    with socket.socket(family_of(source[0]), socket.SOCK_RAW, socket.IPPROTO_UDP) as s:
        if s.family == socket.AF_INET6:
            s.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_CHECKSUM, 6)
        s.bind((source[0], 0))
        header = struct.pack("!4H", source[1], destination[1], 8 + len(payload), 0)
        s.sendto(header + payload, (destination[0], 0))


def send_icmp_error(kind, code, source, destination):
    """What a router says of the IPv4 datagram that `source`, an endpoint of this machine, sent to `destination`."""
    datagram = struct.pack("!2BHI2BH4s4s", 0x45, 0, 28, 0, 64, socket.IPPROTO_UDP, 0,
                           socket.inet_aton(source[0]), socket.inet_aton(destination[0]))
    datagram += struct.pack("!4H", source[1], destination[1], 8, 0)
    rest = struct.pack("!HH", 0, 1280)  # where it says how much fits, it is this much
    checksum = _checksum(struct.pack("!2BH", kind, code, 0) + rest + datagram)
    with socket.socket(socket.AF_INET, socket.SOCK_RAW, socket.IPPROTO_ICMP) as s:
        s.sendto(struct.pack("!2BH", kind, code, checksum) + rest + datagram, (source[0], 0))
