"""Both sides of the road: the exact bytes at the upstream, and what the client gets."""

import time

from roadlib import wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import Client, ask, dig

SENDER = "com.vendor.browser.agent"


def option_block(options):
    return b"".join(wire.option(code, value) for code, value in options)


def injected(query, options, flags=None):
    """`query` as it goes to the filtering service: its question and one OPT record."""
    block = option_block(options)
    flags = query[2:4] if flags is None else flags.to_bytes(2, "big")
    return (query[:2] + flags + bytes.fromhex("0001 0000 0000 0001")
            + query[12:wire.question_end(query)]
            + bytes.fromhex("013000 0029 0000 00000000") + len(block).to_bytes(2, "big") + block)


class InjectionTest(RoadTest):
    def assert_identity(self, options, expected):
        """`expected` in the order of the codes; 65006 and 65015 are the machine's own."""
        values = dict(options)
        self.assertEqual([code for code, _ in options], sorted(values))
        stamp = values.pop(65015).decode()
        zone = values.pop(65006).decode()
        self.assertRegex(stamp, r"^\d{13}$")
        self.assertLess(abs(int(stamp) / 1000 - time.time()), 3600)
        self.assertRegex(zone, r"^[A-Za-z]+([/+-][A-Za-z0-9_+-]+)*$")
        self.assertEqual(values, {code: value.encode() for code, value in expected.items()})

    def test_query_and_answer_byte_for_byte(self):
        upstream, proxy = self.road()
        query = wire.query("example.com", identifier=0x1234)
        answer = ask(proxy.endpoint, query)

        received = upstream.wait_for_queries(1)
        self.assertEqual(len(received), 1)
        options = wire.injected_options(received[0])
        self.assert_identity(options, {65001: "org42", 65002: "unit7", 65003: "u1", 65004: "127.0.0.1",
                                       65007: "1", 65010: "300", 65011: "C02XL0GYJGH5"})
        self.assertEqual(received[0], injected(query, options))
        self.assertEqual(answer, wire.answer_to(query))

    def test_sending_application(self):
        upstream, proxy = self.road(settings={"addAppSenderId": "YES"}, arguments=("--source-app", SENDER))
        ask(proxy.endpoint, wire.query("example.com"))
        options = dict(wire.injected_options(upstream.wait_for_queries(1)[0]))
        self.assertEqual(options[65005], SENDER.encode())

    def test_user_authentication_off(self):
        settings = {"userAuthEnabled": "False", "ttl": 300}  # a number is no text, so it is not there
        upstream, proxy = self.road(settings=settings)
        ask(proxy.endpoint, wire.query("example.com"))
        self.assert_identity(wire.injected_options(upstream.wait_for_queries(1)[0]),
                             {65001: "org42", 65004: "127.0.0.1", 65007: "1", 65010: "60",
                              65011: "C02XL0GYJGH5"})

    def test_values_beyond_ascii_are_counted_in_bytes(self):
        upstream, proxy = self.road(settings={"organizationId": "Žužemberk", "--userId": "ü" * 100})
        ask(proxy.endpoint, wire.query("example.com"))
        options = dict(wire.injected_options(upstream.wait_for_queries(1)[0]))
        self.assertEqual(options[65001], "Žužemberk".encode())

    def test_header_flags(self):
        # As the client sets them, as the upstream sees them: only the Z bit goes.
        rows = (
            (0, 0),
            (wire.RD, wire.RD),
            (wire.RD | wire.AD, wire.RD | wire.AD),
            (wire.RD | wire.CD, wire.RD | wire.CD),
            (wire.AD | wire.CD, wire.AD | wire.CD),
            (wire.RD | wire.Z, wire.RD),
            (wire.RD | wire.Z | wire.AD | wire.CD, wire.RD | wire.AD | wire.CD),
            (wire.RD | wire.TC | wire.AA | wire.RA, wire.RD | wire.TC | wire.AA | wire.RA),
            (0x7800 | wire.RD, 0x7800 | wire.RD),
        )
        upstream, proxy = self.road()
        for number, (sent, seen) in enumerate(rows):
            with self.subTest(sent=hex(sent)):
                query = wire.query("example.com", flags=sent)
                ask(proxy.endpoint, query)
                received = upstream.wait_for_queries(number + 1)[number]
                self.assertEqual(received, injected(query, wire.injected_options(received), seen))

    def test_own_additional_records_are_replaced(self):
        cookie = wire.option(10, b"12345678")
        rows = (
            wire.opt(),
            wire.opt(cookie, size=4096, ttl=0x8000),
            wire.opt(option_block([(65001, "forged"), (65003, "forged")])),
            wire.record("example.com", wire.TXT, b"\x03abc"),
        )
        upstream, proxy = self.road()
        for number, additional in enumerate(rows):
            with self.subTest(additional=additional.hex()):
                query = wire.query("example.com", additional=additional)
                answer = ask(proxy.endpoint, query)
                received = upstream.wait_for_queries(number + 1)[number]
                options = wire.injected_options(received)
                self.assertEqual(received, injected(query, options))
                self.assertEqual(dict(options)[65001], b"org42")
                self.assertEqual(answer, wire.answer_to(query))

    def test_dig_with_and_without_edns(self):
        upstream, proxy = self.road()
        variants = (("+noedns",), ("+edns=0", "+nocookie"), ("+bufsize=512",), ("+dnssec",), ("+cdflag",),
                    ("+noadflag",), ("+zflag",), ("+ednsopt=65001:abcd",), ("+subnet=192.0.2.0/24",))
        for number, variant in enumerate(variants):
            with self.subTest(variant=variant):
                self.assertEqual(dig(proxy.endpoint, "+short", *variant, "example.com").split(), ["1.2.3.4"])
                received = upstream.wait_for_queries(number + 1)[number]
                self.assertEqual(received, injected(received, wire.injected_options(received)))

    def test_every_datagram_of_one_socket_carries_the_identity(self):
        upstream, proxy = self.road()
        queries = [wire.query(f"h{number}.example", identifier=number) for number in range(50)]
        with Client(proxy.endpoint) as client:
            for query in queries:
                client.send(query)
            answers = [client.receive() for _ in queries]
            self.assertCountEqual(answers, [wire.answer_to(query) for query in queries])
        for received in upstream.wait_for_queries(len(queries)):
            self.assertEqual(dict(wire.injected_options(received))[65001], b"org42")


class OtherServersTest(RoadTest):
    """Queries that are not for the filtering service go out as they came."""

    QUERIES = (
        wire.query("example.com", flags=wire.RD | wire.Z | wire.AD),
        wire.query("example.com", additional=wire.opt(wire.option(10, b"12345678"), size=4096, ttl=0x8000)),
    )

    def assert_untouched(self, settings, server, arguments=()):
        filtering, proxy = self.road(settings=settings, arguments=arguments)
        for number, query in enumerate(self.QUERIES):
            self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
            self.assertEqual(server.wait_for_queries(number + 1)[number], query)
        self.assertEqual(filtering.queries, [])

    def test_local_network_application(self):
        server = self.upstream()
        self.assert_untouched({"localNetworkDNS": server.address}, server,
                              ("--source-app", "com.apple.nsupdate"))

    def test_local_network_application_is_asked_for_before_all_else(self):
        server = self.upstream()
        self.assert_untouched({"localNetworkDNS": server.address, "allowAll": "true"}, server,
                              ("--source-app", "com.apple.OpenDirectoryD"))

    def test_allowed_application(self):
        server = self.upstream()
        self.assert_untouched({"secondDNS": server.address, "allowPackages": "other,BROWSER"}, server,
                              ("--source-app", SENDER))

    def test_allowed_application_of_the_json_settings(self):
        server = self.upstream()
        self.assert_untouched({"secondDNS": server.address, "allowPackages": "other",
                               "jsonVars": '{"allowPackages": ["browser"]}'}, server,
                              ("--source-app", SENDER))

    def test_everything_allowed(self):
        server = self.upstream()
        self.assert_untouched({"secondDNS": server.address, "--allowAll": "true"}, server)

    def test_everything_allowed_is_one_exact_word(self):
        upstream, proxy = self.road(settings={"allowAll": "True"})
        ask(proxy.endpoint, wire.query("example.com"))
        wire.injected_options(upstream.wait_for_queries(1)[0])

    def test_local_network_application_without_its_server(self):
        upstream, proxy = self.road(arguments=("--source-app", "com.apple.nsupdate"))
        ask(proxy.endpoint, wire.query("example.com"))
        wire.injected_options(upstream.wait_for_queries(1)[0])


if __name__ == "__main__":
    main()
