"""DNS messages put together and taken apart by hand, independent of the code under test."""

import random
import struct

A, AAAA, OPT = 1, 28, 41

QR, RD, RA = 0x8000, 0x0100, 0x0080


def name_bytes(name):
    """`a.b` and `a.b.` as labels without compression; a label may be given as bytes in a tuple."""
    labels = name if isinstance(name, tuple) else [x for x in name.split(".") if x]
    out = b""
    for label in labels:
        label = label if isinstance(label, bytes) else label.encode()
        out += bytes([len(label)]) + label
    return out + b"\0"


def query(name, qtype=A, identifier=None, flags=RD, additional=b""):
    identifier = random.randrange(0x10000) if identifier is None else identifier
    return (struct.pack("!6H", identifier, flags, 1, 0, 0, 1 if additional else 0) + name_bytes(name)
            + struct.pack("!2H", qtype, 1) + additional)


def framed(message):
    """`message` as TCP carries it."""
    return struct.pack("!H", len(message)) + message


def opt(options):
    return b"\0" + struct.pack("!2HIH", OPT, 1232, 0, len(options)) + options


def option(code, value):
    value = value if isinstance(value, bytes) else value.encode()
    return struct.pack("!2H", code, len(value)) + value


def question(message):
    """The first question's name with a dot before each label, and where the question ends; nothing is compressed."""
    at, name = 12, ""
    while message[at]:
        name += "." + message[at + 1:at + 1 + message[at]].decode("latin-1")
        at += 1 + message[at]
    return name, at + 5


def injected_options(message):
    """The options that follow the question in the one OPT record named `0`, as (code, value) pairs."""
    _, end = question(message)
    record, rest = message[end:end + 13], message[end + 13:]
    assert record == bytes.fromhex("013000 0029 0000 00000000") + struct.pack("!H", len(rest)), record.hex()
    options = []
    while rest:
        code, size = struct.unpack_from("!2H", rest)
        assert len(rest) >= 4 + size, rest.hex()
        options.append((code, rest[4:4 + size]))
        rest = rest[4 + size:]
    return options


def answer_to(message, rdata=b"\x01\x02\x03\x04", rtype=A, count=1):
    """An ordinary answer to the first question of `message`: QR RD RA, `count` equal records."""
    record = struct.pack("!3HIH", 0xC00C, rtype, 1, 60, len(rdata)) + rdata
    return message[:2] + struct.pack("!5H", QR | RD | RA, 1, count, 0, 0) + message[12:question(message)[1]] + record * count
