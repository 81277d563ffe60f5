"""DNS messages put together and taken apart by hand, independent of the code under test."""

import random
import struct

A, AAAA, OPT = 1, 28, 41

QR, RD, RA, AD = 0x8000, 0x0100, 0x0080, 0x0020


def name_bytes(name):
    """`a.b` and `a.b.` as labels without compression; a label may be given as bytes in a tuple."""
    labels = name if isinstance(name, tuple) else [x for x in name.split(".") if x]
    out = b""
    for label in labels:
        label = label if isinstance(label, bytes) else label.encode()
        out += bytes([len(label)]) + label
    return out + b"\0"


def header(identifier, flags, questions=0, answers=0, authorities=0, additional=0):
    return struct.pack("!6H", identifier, flags, questions, answers, authorities, additional)


def question(name, qtype):
    return name_bytes(name) + struct.pack("!2H", qtype, 1)


def record(owner, rtype, rdata):
    """A resource record; `owner` is a name or, as bytes, the name's wire form (a pointer, say)."""
    owner = owner if isinstance(owner, bytes) else name_bytes(owner)
    return owner + struct.pack("!2HIH", rtype, 1, 60, len(rdata)) + rdata


def query(name, qtype=A, identifier=None, flags=RD, additional=b""):
    identifier = random.randrange(0x10000) if identifier is None else identifier
    return header(identifier, flags, 1, additional=1 if additional else 0) + question(name, qtype) + additional


def framed(message):
    """`message` as TCP carries it."""
    return struct.pack("!H", len(message)) + message


def opt(options=b"", size=1232, ttl=0, owner=b"\0"):
    return owner + struct.pack("!2HIH", OPT, size, ttl, len(options)) + options


def option(code, value):
    value = value if isinstance(value, bytes) else value.encode()
    return struct.pack("!2H", code, len(value)) + value


def question_end(message):
    """Where the first question ends, its name written without compression."""
    at = 12
    while message[at]:
        at += 1 + message[at]
    return at + 5


def question_name(message):
    """The first question's name with a dot before each label."""
    at, name = 12, ""
    while message[at]:
        name += "." + message[at + 1:at + 1 + message[at]].decode("latin-1")
        at += 1 + message[at]
    return name


def injected_options(message):
    """The options that follow the question in the one OPT record named `0`, as (code, value) pairs."""
    record, rest = message[question_end(message):][:13], message[question_end(message) + 13:]
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
    return (message[:2] + struct.pack("!5H", QR | RD | RA, 1, count, 0, 0) + message[12:question_end(message)]
            + record(b"\xc0\x0c", rtype, rdata) * count)
