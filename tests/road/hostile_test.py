"""Hostile clients and hostile upstreams: nothing stops the service, and the next good query is answered."""

import itertools
import random
import resource
import struct

from roadlib import wire
from roadlib.case import RoadTest, main
from roadlib.client import Client, ask
from roadlib.processes import free_port
from roadlib.upstream import by_name

GOOD = wire.query("good.example", additional=wire.opt(wire.option(10, b"12345678"), size=1232))


def cut_and_changed(message):
    """`message` up to each of its bytes, without the rest or with that byte another one."""
    for at, byte in enumerate(message):
        yield from (message[:at], message[:at] + bytes([byte ^ 0xFF]) + message[at + 1:],
                    message[:at] + b"\xc0" + message[at:])


class HostileQueriesTest(RoadTest):
    def test_a_good_query_is_answered_after_each(self):
        texts = ((b"\xff\xfe",), (b"a\0b",), (b"a.b",), (b"http://", b"x"), (b"\x1b[2J\n",), (b"%s%n%x",))
        names = (
            b"\xc0\x0c", b"\xc0\x0d\xc0\x0c", b"\x01a\xc0\x0c",  # to itself, forward into itself, to its own start
            b"\xff\xff", b"\xc0", b"\xc0\x00",                  # past the end, half a pointer, into the header
            b"\x3f" * 64, b"\x80" * 200, b"\xbf" * 192,         # long labels, reserved lengths
            b"\x01a" * 32_000 + b"\0",                          # as many labels as fit
            b"\x01a\0" + b"\xc0\x0c" * 30_000,                  # a long row of pointers
        )
        counts = itertools.product((0, 1, 0xFFFF), (0, 0xFFFF), (0, 0xFFFF), (0, 2, 0xFFFF))
        records = [wire.record(b"\0", rtype, b"")[:-2] + struct.pack("!H", length)  # lengths that lie
                   for rtype in (1, 5, 15, 28, 33, 41, 65) for length in (1, 0xFFFF)]
        _, proxy = self.road()
        for number, datagram in enumerate((
                *cut_and_changed(GOOD), GOOD + b"\xff" * 60_000, b"\0" * 12, b"\xff" * 12, b"\0" * 65_507,
                random.Random(1).randbytes(65_507), wire.answer_to(GOOD, count=20), *map(wire.query, texts),
                *(wire.header(1, wire.RD, 1) + name + struct.pack("!2H", wire.A, 1) for name in names),
                *(wire.header(7, wire.RD, *row) + GOOD[12:] for row in counts),
                *(wire.query("good.example", additional=record) for record in records))):
            with Client(proxy.endpoint) as client, self.subTest(datagram=datagram[:64].hex()):
                client.send(datagram)
                self.query(proxy, f"good{number}.example")


class HostileUpstreamTest(RoadTest):
    """The upstream misbehaves for names that contain `bad`, and answers the others."""

    def test_answers_cut_changed_looped_random_and_too_many(self):
        def whole(query):
            alias = wire.record(b"\xc0\x0c", wire.CNAME, b"\x03www\xc0\x0c")
            host = wire.record(struct.pack("!H", 0xC000 | wire.question_end(query)), wire.A, b"\1\2\3\4")
            return query[:2] + bytes.fromhex("8180 0001 0002 0000 0001") + query[12:wire.question_end(query)] \
                + alias + host + wire.opt()
        noise = random.Random(3)
        bad = wire.query("bad.example", identifier=1)
        loop = wire.record(struct.pack("!H", 0xC000 | wire.question_end(bad)), wire.A, b"\1\2\3\4")
        answers = [*([datagram] for datagram in cut_and_changed(whole(bad))),
                   *([noise.randbytes(size)] for size in (0, 1, 11, 12, 13, 512, 4096, 65_507)),
                   [wire.answer_to(bad)] * 20, [b""] * 20,
                   [bad[:2] + bytes.fromhex("8180 0001 0001 0000 0000") + bad[12:] + loop]]
        rest = iter(answers)
        upstream, proxy = self.road(by_name("bad", lambda query: next(rest)))
        for number, answer in enumerate(answers):
            with Client(proxy.endpoint) as client, self.subTest(answer=answer[0][:64].hex()):
                client.send(bad)
                upstream.wait_for_queries(2 * number + 1)
                self.query(proxy, "good.example")

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
                self.query(proxy, f"good{number}.example")
        self.assertLess(proxy.descriptors(), 4096)
        self.assertGreater(len(upstream.queries), 4096)

    def test_a_port_that_refuses(self):
        port = free_port()
        proxy = self.proxy({"filteringDNS": f"127.0.0.1:{port}"})
        with Client(proxy.endpoint) as client:
            for number in range(200):
                client.send(wire.query(f"h{number}.example"))
        proxy.wait_for_line("udp socket error: ")
        self.upstream(port=port)
        self.query(proxy)

    def test_servers_that_are_the_proxy_itself(self):
        for host, address in (("127.0.0.1", "127.0.0.1"), ("0.0.0.0", "127.0.0.9")):
            for form in ({"filteringDNS": "OWN"}, {"mappedDomains": "[example:OWN]"}, {"localNetworkDNS": "OWN"},
                         {"secondDNS": "OWN", "allowAll": "true"}):
                port = free_port(host)
                settings = {key: text.replace("OWN", f"{address}:{port}") for key, text in form.items()}
                with self.subTest(host=host, settings=settings):
                    proxy = self.proxy(settings, hosts=(host,), port=port,
                                       arguments=("--source-app", "com.apple.nsupdate"))
                    proxy.endpoint = ("127.0.0.1", port)
                    with Client(proxy.endpoint) as client:
                        client.send(wire.query("a.example"))
                        proxy.wait_for_few_lines("State: Failed,flowHash", 100)
                    self.reconfigure(proxy, {"secondDNS": self.upstream().address, "allowAll": "true"})
                    self.query(proxy)
                    self.assertEqual(sum("is served by this program itself" in line for line in proxy.lines), 2)
                    proxy.stop()


if __name__ == "__main__":
    main()
