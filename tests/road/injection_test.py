"""Both sides of the road: the exact bytes at the upstream, and what the client gets."""

import time

from roadlib import wire
from roadlib.case import RoadTest, main
from roadlib.client import Client

SENDER = "com.vendor.browser.agent"


def injected(query, options):
    """`query` as it goes to the filtering service: its question and one OPT record."""
    block = b"".join(wire.option(code, value) for code, value in options)
    return (query[:4] + bytes.fromhex("0001 0000 0000 0001") + query[12:wire.question_end(query)]
            + bytes.fromhex("013000 0029 0000 00000000") + len(block).to_bytes(2, "big") + block)


class InjectionTest(RoadTest):
    def test_query_and_answer_byte_for_byte(self):
        upstream, proxy = self.road(settings={"--addAppSenderId": "YES", "userId": "ü" * 100},
                                    arguments=("--source-app", SENDER))
        query = self.query(proxy, identifier=0x1234, flags=wire.RD | wire.AD,
                           additional=wire.opt(wire.option(65001, "forged"), size=4096, ttl=0x8000))
        [received] = upstream.wait_for_queries(1)
        options = wire.injected_options(received)
        self.assertEqual(received, injected(query, options))
        values = dict(options)
        self.assertEqual([code for code, _ in options], sorted(values))
        self.assertRegex(values[65015], rb"^\d{13}$")
        self.assertLess(abs(int(values.pop(65015)) / 1000 - time.time()), 3600)
        self.assertRegex(values.pop(65006), rb"^[A-Za-z]+([/+-][A-Za-z0-9_+-]+)*$")
        self.assertEqual(values, {65001: b"org42", 65002: b"unit7", 65003: "ü".encode() * 100, 65004: b"127.0.0.1",
                                  65005: SENDER.encode(), 65007: b"1", 65010: b"300", 65011: b"C02XL0GYJGH5"})

    def test_every_datagram_of_one_socket(self):
        upstream, proxy = self.road()
        queries = [wire.query(f"h{number}.example", identifier=number) for number in range(50)]
        with Client(proxy.endpoint) as client:
            for query in queries:
                client.send(query)
            answers = [client.receive() for _ in queries]
        self.assertCountEqual(answers, [wire.answer_to(query) for query in queries])
        for received in upstream.wait_for_queries(len(queries)):
            self.assertEqual(received, injected(received, wire.injected_options(received)))


if __name__ == "__main__":
    main()
