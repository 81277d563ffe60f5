"""Hostile clients and hostile upstreams: nothing stops the service, and the next good query is answered."""

import random
import resource
import struct

from roadlib import wire
from roadlib.case import LOAD, RoadTest, main
from roadlib.client import Client, ask
from roadlib.processes import free_port
from roadlib.upstream import Upstream, by_name

GOOD = wire.query("good.example", additional=wire.opt(wire.option(10, b"12345678"), size=1232))


class HostileTest(RoadTest):
    def assert_serves(self, proxy):
        query = wire.query(f"good{random.randrange(1 << 32)}.example")
        self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
        self.assertTrue(proxy.is_running())

    def assert_survives(self, proxy, datagrams):
        """Each of `datagrams` from a socket of its own, and a good query right behind it."""
        for datagram in datagrams:
            with Client(proxy.endpoint) as client:
                client.send(datagram)
                with self.subTest(datagram=datagram[:64].hex()):
                    self.assert_serves(proxy)


class HostileQueriesTest(HostileTest):
    def test_cut_at_every_length(self):
        _, proxy = self.road()
        self.assert_survives(proxy, [GOOD[:length] for length in range(len(GOOD))])

    def test_every_byte_changed(self):
        _, proxy = self.road()
        changed = []
        for at, byte in enumerate(GOOD):
            for value in (byte ^ 0xFF, byte ^ 0x01, byte ^ 0x80, 0x00, 0xC0, 0xFF):
                changed.append(GOOD[:at] + bytes([value]) + GOOD[at + 1:])
        self.assert_survives(proxy, changed)

    def test_extended_at_every_byte(self):
        _, proxy = self.road()
        extended = [GOOD[:at] + more + GOOD[at:] for at in range(len(GOOD) + 1)
                    for more in (b"\0", b"\xff", b"\xc0\x0c")]
        self.assert_survives(proxy, extended + [GOOD + b"\xff" * size for size in (1, 512, 60_000)])

    def test_names_that_point_in_circles(self):
        head = wire.header(1, wire.RD, 1)
        tail = struct.pack("!2H", wire.A, 1)
        rows = (
            b"\xc0\x0c",                                  # to itself
            b"\xc0\x0d\xc0\x0c",                          # forward, into itself
            b"\x01a\xc0\x0c",                             # back to its own start
            b"\xff\xff", b"\xc0",                         # past the end, half a pointer
            b"\xc0\x00",                                  # into the header
            b"\x3f" * 64, b"\x80" * 200, b"\xbf" * 192,   # long labels, reserved lengths
            b"\x01a" * 32_000 + b"\0",                    # as many labels as fit
            b"\x01a\0" + b"\xc0\x0c" * 30_000,            # a long row of pointers
        )
        _, proxy = self.road()
        self.assert_survives(proxy, [head + row + tail for row in rows])

    def test_long_chain_of_pointers(self):
        # Each record's name points at the one before, so the last needs as many steps as there are records.
        _, proxy = self.road()
        records, owner = b"", 12
        at = wire.question_end(GOOD)
        count = 0
        while at + len(records) < 0x3F00:
            start = at + len(records)
            records += wire.record(b"\x01b" + struct.pack("!H", 0xC000 | owner), wire.TXT, b"")
            owner, count = start, count + 1
        query = (GOOD[:2] + struct.pack("!5H", wire.RD, 1, 0, 0, count) + GOOD[12:at] + records)
        self.assert_survives(proxy, [query])

    def test_counts_that_lie(self):
        body = GOOD[12:]
        rows = [(q, a, n, r) for q in (0, 1, 2, 0xFFFF) for a in (0, 1, 0xFFFF) for n in (0, 0xFFFF)
                for r in (0, 1, 2, 0xFFFF)]
        _, proxy = self.road()
        self.assert_survives(proxy, [wire.header(7, wire.RD, *row) + body for row in rows])

    def test_records_whose_length_lies(self):
        rows = [GOOD[:12 + len(wire.question("good.example", 1))] + wire.record(b"\0", rtype, b"")[:-2]
                + struct.pack("!H", length)
                for rtype in (1, 2, 5, 6, 12, 15, 16, 28, 33, 41, 65) for length in (0, 1, 3, 0x7FFF, 0xFFFF)]
        _, proxy = self.road()
        self.assert_survives(proxy, rows)

    def test_names_that_are_no_text(self):
        rows = [wire.query(name) for name in (
            (b"\xff\xfe", b"example"), (b"a\0b", b"example"), (b"a.b", b"example"), (b"http", b"example"),
            (b"http://", b"x"), (b"\x1b[2J\n", b"example"), (b"\xc3\x28",), ("ü" * 31,), (b"%s%n%x",))]
        _, proxy = self.road()
        self.assert_survives(proxy, rows)

    def test_empty_and_huge_datagrams(self):
        _, proxy = self.road()
        self.assert_survives(proxy, [b"", b"\0", b"\0" * 11, b"\0" * 12, b"\xff" * 12, b"\0" * 65_507,
                                     b"\xff" * 65_507, random.Random(1).randbytes(65_507)])

    def test_answers_sent_as_queries(self):
        _, proxy = self.road()
        self.assert_survives(proxy, [wire.answer_to(GOOD), wire.answer_to(GOOD, count=20)])

    def test_noise(self):
        noise = random.Random(2)
        rows = [noise.randbytes(noise.randrange(80)) for _ in range(int(1000 * LOAD))]
        rows += [wire.header(noise.randrange(0x10000), noise.randrange(0x10000), 1, noise.randrange(3),
                             noise.randrange(3), noise.randrange(3)) + noise.randbytes(noise.randrange(200))
                 for _ in range(int(1000 * LOAD))]
        _, proxy = self.road()
        with Client(proxy.endpoint) as client:
            for number, row in enumerate(rows):
                client.send(row)
                if number % 50 == 49:
                    self.assert_serves(proxy)
        self.assert_serves(proxy)


class HostileUpstreamTest(HostileTest):
    """The upstream misbehaves for names that contain `bad`, and answers the others."""

    def assert_survives_answers(self, answers):
        rest = iter(answers)
        upstream, proxy = self.road(by_name({"bad": lambda query: next(rest)(query)}))
        for number in range(len(answers)):
            with Client(proxy.endpoint) as client:
                client.send(wire.query("bad.example"))
                upstream.wait_for_queries(2 * number + 1)
                with self.subTest(number=number):
                    self.assert_serves(proxy)

    def test_answer_cut_changed_and_extended_at_every_byte(self):
        def answer(query):
            alias = wire.record(b"\xc0\x0c", wire.CNAME, b"\x03www\xc0\x0c")
            host = wire.record(b"\xc0\x0c", wire.A, b"\x01\x02\x03\x04")
            end = wire.question_end(query)
            return query[:2] + bytes.fromhex("8180 0001 0002 0000 0001") + query[12:end] + alias + host \
                + wire.opt()
        size = len(answer(wire.query("bad.example")))
        bad = []
        for at in range(size):
            bad.append(lambda q, n=at: [answer(q)[:n]])
            bad.append(lambda q, n=at: [answer(q)[:n] + bytes([answer(q)[n] ^ 0xFF]) + answer(q)[n + 1:]])
            bad.append(lambda q, n=at: [answer(q)[:n] + b"\xc0" + answer(q)[n:]])
        self.assert_survives_answers(bad)

    def test_garbage(self):
        noise = random.Random(3)
        sizes = [0, 1, 11, 12, 13, 100, 512, 4096, 65_507]
        self.assert_survives_answers([lambda q, n=n: [noise.randbytes(n)] for n in sizes * 3])

    def test_more_answers_than_queries(self):
        self.assert_survives_answers([lambda q: [wire.answer_to(q)] * 20, lambda q: [b""] * 20,
                                      lambda q: [b"\0"] * 20])

    def test_the_greatest_answer_arrives_whole(self):
        def respond(query):
            # Opaque RDATA, which nothing writes shorter or longer than it came.
            return [wire.answer_to(query, b"\xa5" * (65_507 - 12 - wire.question_end(query)), 65_280)]
        _, proxy = self.road(by_name({"bad": respond}))
        for _ in range(50):
            query = wire.query("bad.example")
            self.assertEqual(ask(proxy.endpoint, query), respond(query)[0])
        self.assert_serves(proxy)

    def test_many_records(self):
        def respond(query):
            return [wire.answer_to(query, count=(65_507 - wire.question_end(query)) // 16)]
        _, proxy = self.road(by_name({"bad": respond}))
        query = wire.query("bad.example")
        self.assertEqual(ask(proxy.endpoint, query), respond(query)[0])
        self.assert_serves(proxy)

    def test_answers_full_of_pointers(self):
        def pointers(query):
            count = 65_000 // 14
            body = wire.record(b"\xc0\x0c", wire.CNAME, b"\xc0\x0c") * count
            return [query[:2] + struct.pack("!5H", 0x8180, 1, count, 0, 0)
                    + query[12:wire.question_end(query)] + body]
        def loop(query):
            end = wire.question_end(query)
            return [query[:2] + bytes.fromhex("8180 0001 0001 0000 0000") + query[12:end]
                    + wire.record(struct.pack("!H", 0xC000 | end), wire.A, b"\1\2\3\4")]
        self.assert_survives_answers([pointers, loop])

    def test_silence_is_bounded(self):
        # More unanswered flows than there are descriptors to wait with.
        upstream, proxy = self.road(
            by_name({"bad": lambda query: []}),
            preparation=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (1024, 4096)))
        for number in range(5000):
            with Client(proxy.endpoint) as client:
                client.send(wire.query(f"bad{number}.example"))
            if number % 100 == 99:
                self.assert_serves(proxy)
        self.assertLess(proxy.descriptors(), 4096)
        self.assertGreater(len(upstream.queries), 4096)

    def test_refused_port(self):
        port = free_port()
        proxy = self.proxy({"filteringDNS": f"127.0.0.1:{port}"})
        with Client(proxy.endpoint) as client:
            for number in range(200):
                client.send(wire.query(f"h{number}.example"))
        proxy.wait_for_line("udp socket error: ")
        server = Upstream(port=port)
        self.addCleanup(server.close)
        self.assert_serves(proxy)

    def test_addresses_that_are_none(self):
        for address in ("nonsense", "", ":", "300.1.1.1:53", "127.0.0.1:0", "127.0.0.1:70000", "127.0.0.1:-1",
                        "::1", "[::1]:53", "127.0.0.1:99999999999999999999", "255.255.255.255:53"):
            with self.subTest(address=address):
                proxy = self.proxy({"filteringDNS": address})
                with Client(proxy.endpoint) as client:
                    client.send(wire.query("example.com"))
                    proxy.wait_for_line("connect to DNS using Quillet DNS (")
                self.reconfigure(proxy, {"filteringDNS": self.upstream().address})
                self.assert_serves(proxy)


if __name__ == "__main__":
    main()
