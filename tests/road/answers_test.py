"""Right answers at the client, whatever tool asks, over IPv4 and IPv6; the demo filter as upstream."""

import ipaddress

from roadlib import names, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import Client, ask, dig, kdig

HOSTS = ("127.0.0.1", "127.0.0.2", "::1")


class AnswersTest(RoadTest):
    def setUp(self):
        super().setUp()
        self.filter = self.demo_filter()
        self.road_proxy = self.proxy({"filteringDNS": self.filter.address, **IDENTITY}, hosts=HOSTS)

    def test_dig_over_each_listen_address(self):
        for endpoint in self.road_proxy.endpoints:
            for name in ("example.com", "a.very.long.name.with.many.labels.example", "xn--bcher-kva.example"):
                self.assertEqual(dig(endpoint, "+short", name, "A").split(), [names.ipv4(name)])
                self.assertEqual(dig(endpoint, "+short", name, "AAAA").split(), [names.ipv6(name)])

    def test_dig_reports_no_problem(self):
        for endpoint in self.road_proxy.endpoints:
            for edns in (("+noedns",), ("+edns", "+dnssec"), ("+bufsize=4096", "+nocookie"), ("+nsid",)):
                shown = dig(endpoint, *edns, "example.com", "A")
                self.assertIn("status: NOERROR", shown)
                self.assertIn("flags: qr rd ra; QUERY: 1, ANSWER: 1, AUTHORITY: 0", shown)
                self.assertNotIn("WARNING", shown)
                self.assertNotIn("Warning", shown)

    def test_kdig_over_each_listen_address(self):
        for endpoint in self.road_proxy.endpoints:
            self.assertEqual(kdig(endpoint, "+short", "example.com", "A").split(),
                             [names.ipv4("example.com")])
            shown = kdig(endpoint, "example.com", "HTTPS")
            self.assertRegex(shown, r"example\.com\.\s+60\s+IN\s+(HTTPS|TYPE65)\s")
            self.assertNotIn("WARNING", shown)

    def test_https_record_byte_for_byte(self):
        query = wire.query("example.com", wire.HTTPS, identifier=0xABCD)
        service = bytes.fromhex("0001 00 0001 0003 026832")  # 1 . alpn=h2
        self.assertEqual(ask(self.road_proxy.endpoint, query),
                         wire.answer_to(query, service, wire.HTTPS))

    def test_letter_case_and_identifier_come_back(self):
        for identifier in (0, 1, 0xFFFF):
            query = wire.query("ExAmPlE.cOm", identifier=identifier)
            expected = wire.answer_to(query, ipaddress.ip_address(names.ipv4("example.com")).packed)
            self.assertEqual(ask(self.road_proxy.endpoint, query), expected)

    def test_unknown_type_is_refused(self):
        for endpoint in self.road_proxy.endpoints:
            self.assertIn("status: REFUSED", dig(endpoint, "example.com", "MX"))

    def test_answers_come_from_the_address_that_was_asked(self):
        # A connected socket takes nothing from elsewhere.
        for endpoint in self.road_proxy.endpoints:
            with Client(endpoint) as client:
                for number in range(10):
                    query = wire.query(f"h{number}.example")
                    self.assertEqual(wire.identifier_of(client.ask(query)), wire.identifier_of(query))


class UpstreamAnswersTest(RoadTest):
    """What an ordinary upstream says reaches the client."""

    def test_negative_answers(self):
        for rcode in (wire.NXDOMAIN, wire.SERVFAIL, wire.REFUSED, wire.NOTIMP):
            with self.subTest(rcode=rcode):
                _, proxy = self.road(lambda q, r=rcode: [wire.answer_to(q, rcode=r, count=0)])
                query = wire.query("missing.example")
                self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query, rcode=rcode, count=0))

    def test_compressed_chain_of_aliases(self):
        def respond(query):
            www = wire.question_end(query)  # the CNAME's record starts here, its RDATA 12 bytes later
            target = b"\x03cdn" + b"\xc0\x10"  # cdn + the example.com of the question
            records = (wire.record(b"\xc0\x0c", wire.CNAME, target)
                       + wire.record(bytes([0xC0, www + 12]), wire.A, b"\x0a\0\0\x01")
                       + wire.record(bytes([0xC0, www + 12]), wire.A, b"\x0a\0\0\x02"))
            return [query[:2] + bytes.fromhex("8180 0001 0003 0000 0000") + query[12:www] + records]
        _, proxy = self.road(respond)
        self.assertEqual(dig(proxy.endpoint, "+short", "www.example.com", "A").split(),
                         ["cdn.example.com.", "10.0.0.1", "10.0.0.2"])


if __name__ == "__main__":
    main()
