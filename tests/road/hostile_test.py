"""Hostile clients and hostile upstreams: nothing stops the service, and the next good query is answered."""

import itertools
import random
import resource
import struct

from roadlib import wire
from roadlib.case import RoadTest, main
from roadlib.client import Client, ask
from roadlib.processes import free_port
from roadlib.upstream import Upstream, by_name

GOOD = wire.query("good.example", additional=wire.opt(wire.option(10, b"12345678"), size=1232))


class HostileTest(RoadTest):
    def assert_serves(self, proxy):
        query = wire.query(f"good{random.randrange(1 << 32)}.example")
        self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
        self.assertTrue(proxy.is_running())


class HostileQueriesTest(HostileTest):
    def assert_survives(self, datagrams):
        """Each of `datagrams` from a socket of its own, and a good query right behind it."""
        _, proxy = self.road()
        for datagram in datagrams:
            with Client(proxy.endpoint) as client:
                client.send(datagram)
                with self.subTest(datagram=datagram[:64].hex()):
                    self.assert_serves(proxy)

    def test_cut_changed_and_extended_at_every_byte(self):
        rows = [GOOD + b"\xff" * 60_000]
        for at, byte in enumerate(GOOD):
            head, rest = GOOD[:at], GOOD[at:]
            rows.append(head)
            rows += [head + bytes([value]) + rest[1:] for value in (byte ^ 0xFF, byte ^ 0x01, byte ^ 0x80, 0x00, 0xC0)]
            rows += [head + more + rest for more in (b"\0", b"\xff", b"\xc0\x0c")]
        self.assert_survives(rows)

    def test_names_that_point_in_circles_or_are_too_long(self):
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
        self.assert_survives(wire.header(1, wire.RD, 1) + row + struct.pack("!2H", wire.A, 1) for row in rows)

    def test_counts_and_lengths_that_lie(self):
        counts = itertools.product((0, 1, 2, 0xFFFF), (0, 1, 0xFFFF), (0, 0xFFFF), (0, 1, 2, 0xFFFF))
        self.assert_survives(wire.header(7, wire.RD, *row) + GOOD[12:] for row in counts)
        self.assert_survives(wire.query("good.example", additional=wire.record(b"\0", rtype, b"")[:-2]
                                        + struct.pack("!H", length))
                             for rtype in (1, 5, 15, 28, 33, 41, 65) for length in (1, 3, 0x7FFF, 0xFFFF))

    def test_what_is_no_query(self):
        names = ((b"\xff\xfe",), (b"a\0b",), (b"a.b",), (b"http://", b"x"), (b"\x1b[2J\n",), (b"%s%n%x",))
        self.assert_survives([b"", b"\0", b"\0" * 12, b"\xff" * 12, b"\0" * 65_507, random.Random(1).randbytes(65_507),
                              wire.answer_to(GOOD, count=20), *(wire.query(name) for name in names)])


class HostileUpstreamTest(HostileTest):
    """The upstream misbehaves for names that contain `bad`, and answers the others."""

    def assert_survives_answers(self, answers):
        rest = iter(answers)
        upstream, proxy = self.road(by_name("bad", lambda query: next(rest)(query)))
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
        bad = []
        for at in range(len(answer(wire.query("bad.example")))):
            bad.append(lambda q, n=at: [answer(q)[:n]])
            bad.append(lambda q, n=at: [answer(q)[:n] + bytes([answer(q)[n] ^ 0xFF]) + answer(q)[n + 1:]])
            bad.append(lambda q, n=at: [answer(q)[:n] + b"\xc0" + answer(q)[n:]])
        self.assert_survives_answers(bad)

    def test_garbage_too_many_answers_and_pointers_in_circles(self):
        def loop(query):
            end = wire.question_end(query)
            return [query[:2] + bytes.fromhex("8180 0001 0001 0000 0000") + query[12:end]
                    + wire.record(struct.pack("!H", 0xC000 | end), wire.A, b"\1\2\3\4")]
        noise = random.Random(3)
        self.assert_survives_answers([
            *(lambda q, n=n: [noise.randbytes(n)] for n in (0, 1, 11, 12, 13, 512, 4096, 65_507)),
            lambda q: [wire.answer_to(q)] * 20, lambda q: [b""] * 20, loop])

    def test_the_greatest_answers_arrive_whole(self):
        def respond(query):
            room = 65_507 - wire.question_end(query)
            if "one" in wire.question_name(query):
                # Opaque RDATA, which nothing writes shorter or longer than it came.
                return [wire.answer_to(query, b"\xa5" * (room - 12), 65_280)]
            return [wire.answer_to(query, count=room // 16)]
        _, proxy = self.road(respond)
        for name in ("one.example", "many.example"):
            query = wire.query(name)
            self.assertEqual(ask(proxy.endpoint, query), respond(query)[0])

    def test_silence_is_bounded(self):
        # More unanswered flows than there are descriptors to wait with.
        upstream, proxy = self.road(
            by_name("bad", lambda query: []),
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

    def test_servers_that_are_the_proxy_itself(self):
        for host, address in (("127.0.0.1", "127.0.0.1"), ("0.0.0.0", "127.0.0.9")):
            for form in ({"filteringDNS": "OWN"}, {"mappedDomains": "[example:OWN]"}, {"localNetworkDNS": "OWN"},
                         {"secondDNS": "OWN", "allowAll": "true"}):
                port = free_port(host)
                settings = {key: text.replace("OWN", f"{address}:{port}") for key, text in form.items()}
                with self.subTest(host=host, settings=settings):
                    proxy = self.proxy(settings, hosts=(host,), port=port,
                                       arguments=("--source-app", "com.apple.nsupdate"))
                    with Client(("127.0.0.1", port)) as client:
                        client.send(wire.query("a.example"))
                        proxy.wait_for_few_lines("State: Failed,flowHash", 100)
                    self.reconfigure(proxy, {"secondDNS": self.upstream().address, "allowAll": "true"})
                    query = wire.query("good.example")
                    self.assertEqual(ask(("127.0.0.1", port), query), wire.answer_to(query))
                    self.assertEqual(sum("is served by this program itself" in line for line in proxy.lines), 2)
                    self.assertEqual(proxy.stop(), 0)

    def test_addresses_that_are_none(self):
        proxy = self.proxy({})
        for number, address in enumerate(("nonsense", "", "127.0.0.1:0", "127.0.0.1:70000", "127.0.0.1:-1", "::1",
                                          "255.255.255.255:53")):
            with self.subTest(address=address), Client(proxy.endpoint) as client:
                self.reconfigure(proxy, {"filteringDNS": address})
                client.send(wire.query("example.com"))
                proxy.wait_for_line("connect to DNS using Quillet DNS (", number + 1)
        self.reconfigure(proxy, {"filteringDNS": self.upstream().address})
        self.assert_serves(proxy)


if __name__ == "__main__":
    main()
