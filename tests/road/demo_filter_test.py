"""The demo filtering service by itself."""

import signal
import socket

from roadlib import names, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import Client, ask, dig


def endpoint_of(address):
    host, port = address.rsplit(":", 1)
    return host.strip("[]"), int(port)


class DemoFilterTest(RoadTest):
    def test_addresses_made_from_the_name(self):
        # Known values of the hash: the names a and foobar of its authors' own test vectors.
        self.assertEqual(names.fnv1a("a"), 0xAF63DC4C8601EC8C)
        self.assertEqual(names.fnv1a("foobar"), 0x85944171F73967E8)
        process = self.demo_filter(hosts=("127.0.0.1", "127.0.0.2", "::1"))
        for address in process.addresses:
            endpoint = endpoint_of(address)
            for name in ("foobar", "FooBar", "example.com", "."):
                self.assertEqual(dig(endpoint, "+short", name, "A").split(), [names.ipv4(name)])
                self.assertEqual(dig(endpoint, "+short", name, "AAAA").split(), [names.ipv6(name)])

    def test_flags_and_question(self):
        process = self.demo_filter()
        query = wire.query("ExAmPlE.com", wire.HTTPS, identifier=0x1234, flags=wire.RD | wire.CD | wire.AD)
        self.assertEqual(ask(endpoint_of(process.address), query),
                         wire.answer_to(query, bytes.fromhex("0001 00 0001 0003 026832"), wire.HTTPS))
        query = wire.query("example.com", flags=0)
        self.assertEqual(ask(endpoint_of(process.address), query)[2:4], b"\x80\x80")

    def test_refusals(self):
        process = self.demo_filter()
        endpoint = endpoint_of(process.address)
        rows = (
            (wire.query("example.com", wire.MX), wire.REFUSED),
            (wire.query("example.com", 255), wire.REFUSED),
            (wire.header(1, wire.RD, 1) + wire.question("example.com", wire.A, 3), wire.REFUSED),
            (wire.query("example.com", flags=0x2000), wire.NOTIMP),
            (wire.header(1, wire.RD, 0), wire.FORMERR),
            (wire.header(1, wire.RD, 2) + wire.question("a", 1) + wire.question("b", 1), wire.FORMERR),
            (wire.header(1, wire.RD, 1) + b"\xc0\x0c\0\1\0\1", wire.FORMERR),
            (wire.header(1, wire.RD, 1), wire.FORMERR),
        )
        for query, rcode in rows:
            with self.subTest(query=query.hex()):
                answer = ask(endpoint, query)
                self.assertEqual(answer[:2], query[:2])
                self.assertEqual(answer[2] & 0x80, 0x80)
                self.assertEqual(wire.rcode_of(answer), rcode)
                self.assertEqual(answer[6:8], b"\0\0")

    def test_what_is_no_query_is_ignored(self):
        process = self.demo_filter()
        with Client(endpoint_of(process.address)) as client:
            for datagram in (b"", b"\0" * 11, wire.answer_to(wire.query("example.com"))):
                client.send(datagram)
            query = wire.query("example.com", identifier=0x4242)
            self.assertEqual(wire.identifier_of(client.ask(query)), b"\x42\x42")  # the first that comes

    def test_line_of_a_query(self):
        process = self.demo_filter()
        options = wire.option(65001, "org42") + wire.option(65003, "u1") + wire.option(65004, "\x1b[2J\n")
        rows = (
            (wire.query("example.com", additional=wire.opt(options, owner=b"\x010\0")),
             r"A example.com  65001=org42 65003=u1 65004=\x1B[2J\n"),
            (wire.query("example.com", wire.AAAA), "AAAA example.com  no identity"),
            (wire.query("example.com", wire.HTTPS, additional=wire.opt()), "HTTPS example.com  no identity"),
            (wire.query("a\x1b[2J\n.example", wire.MX), r"TYPE15 a\x1B[2J\n.example  no identity"),
            (wire.query(".", wire.A), "A .  no identity"),
            (wire.query("example.com", additional=wire.opt(b"\xfd\xe9\0\x09abc")), "A example.com  no identity"),
        )
        for query, _ in rows:
            ask(endpoint_of(process.address), query)
        process.stop()
        self.assertEqual(process.output()[1:-1], [line for _, line in rows])

    def test_totals(self):
        for quiet in (False, True):
            for number in (signal.SIGTERM, signal.SIGINT):
                process = self.demo_filter(quiet=quiet)
                endpoint = endpoint_of(process.address)
                for qtype in (wire.A, wire.AAAA, wire.MX):
                    ask(endpoint, wire.query("example.com", qtype))
                process.send_signal(number)
                self.assertEqual(process.wait(), 0)
                self.assertEqual(process.output()[-1], "queries 3, answered 2, refused 1")
                self.assertEqual(len(process.output()), 2 if quiet else 5)

    def test_policy_and_portal(self):
        process = self.demo_filter(hosts=("127.0.0.1", "127.0.0.2"), services=("--policy", "--portal"))
        filtering, mapped, policy, portal = process.addresses
        proxy = self.proxy({"filteringDNS": filtering, "policyServer": policy, **IDENTITY})
        ask(proxy.endpoint, wire.query("first.example"))
        proxy.wait_for_line("Policy is fetched, success - true")
        query = wire.query("www.intranet.example")
        self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query, socket.inet_aton(names.ipv4("www.intranet.example"))))
        proxy.wait_for_line(f"connect to DNS  {mapped}, q: Optional(\"intranet.example\")")
        registration = wire.query("portal.example", flags=wire.AA, additional=wire.opt(wire.option(65007, "1")))
        self.assertEqual(wire.rcode_of(ask(endpoint_of(portal), registration)), wire.NOERROR)
        with Client(endpoint_of(policy)) as client:
            client.send(b"no request")
            self.assertIn(f'"dnsServerIP": "{mapped}"'.encode(),
                          client.ask(b'{"function": "localDNSMap","companyId": "a"b"}'))
        self.assertEqual(proxy.stop(), 0)
        process.stop()
        lines = [line.split("  ")[0] for line in process.output()]
        for line in ("policy org42", 'policy a"b', "portal A portal.example", "A www.intranet.example"):
            self.assertIn(line, lines)


if __name__ == "__main__":
    main()
