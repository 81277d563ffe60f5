"""Hostile clients and hostile upstreams: nothing stops the service, and the next good query is answered."""

import pathlib
import random
import resource

from roadlib import wire
from roadlib.case import RoadTest
from roadlib.client import Client, ask
from roadlib.upstream import by_name

GOOD = wire.query("good.example", additional=wire.opt(wire.option(10, b"12345678")))
FUZZ = pathlib.Path(__file__).parents[2] / "fuzz"
# What the decoders are fuzzed with: pointers to themselves, counts and lengths that lie, labels that are none.
CORPUS = [file.read_bytes() for folder in ("dns_tools/corpus/MessageFuzz", "dnscodec/corpus/DNSParserFuzz")
          for file in sorted((FUZZ / folder).iterdir())]
NOISE = [random.Random(1).randbytes(size) for size in (0, 1, 11, 12, 13, 512, 4096, 65_507)]


def cut_and_changed(message):
    """`message` up to each of its bytes, without the rest or with that byte another one."""
    for at, byte in enumerate(message):
        yield from (message[:at], message[:at] + bytes([byte ^ 0xFF]) + message[at + 1:],
                    message[:at] + b"\xc0" + message[at:])


class HostileQueriesTest(RoadTest):
    def test_a_good_query_is_answered_after_each(self):
        texts = ((b"\xff\xfe",), (b"a\0b",), (b"a.b",), (b"http://", b"x"), (b"\x1b[2J\n",), (b"%s%n%x",))
        _, proxy = self.road()
        for number, datagram in enumerate((
                *cut_and_changed(GOOD), *CORPUS, *NOISE, GOOD + b"\xff" * 60_000, b"\0" * 65_507,
                wire.answer_to(GOOD, count=20), *map(wire.query, texts))):
            with Client(proxy.endpoint) as client, self.subTest(datagram=datagram[:64].hex()):
                client.send(datagram)
                self.query(proxy, f"good{number}.example")


class HostileUpstreamTest(RoadTest):
    """The upstream misbehaves for names that contain `bad`, and answers the others."""

    def test_answers_cut_changed_random_and_too_many(self):
        bad = wire.query("bad.example", identifier=1)
        answers = [*([datagram] for datagram in (*cut_and_changed(wire.answer_to(bad)), *CORPUS, *NOISE)),
                   [wire.answer_to(bad)] * 20, [b""] * 20]
        rest = iter(answers)
        upstream, proxy = self.road(by_name("bad", lambda query: next(rest)))
        for number, answer in enumerate(answers):
            with Client(proxy.endpoint) as client, self.subTest(answer=answer[0][:64].hex()):
                client.send(bad)
                upstream.wait_for_queries(2 * number + 1)
                self.query(proxy, "good.example")

    def test_the_greatest_answers_arrive_whole(self):
        def respond(query):
            name, end = wire.question(query)
            room = 65_507 - end
            if "one" in name:
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
