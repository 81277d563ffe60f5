"""The demo filtering service: what the usual tools get through the proxy, the policy that it hands out, its lines."""

import signal

from roadlib import wire
from roadlib.case import IDENTITY, RoadTest
from roadlib.client import Client, ask, dig

# In 198.18.0.0/15 and in 2001:db8::/64 the low bits of the name's 64-bit FNV-1a.
ADDRESSES = {"example.com": ("198.19.20.198", "2001:db8::5768:4663:4e27:14c6"),
             "a.very.long.name.with.many.labels.example": ("198.19.212.225", "2001:db8::49ee:c593:879f:d4e1")}


def endpoint_of(address):
    host, port = address.rsplit(":", 1)
    return host, int(port)


class DemoFilterTest(RoadTest):
    def test_the_usual_tools_over_each_listen_address(self):
        proxy = self.proxy({"filteringDNS": self.demo_filter().address, **IDENTITY},
                           hosts=("127.0.0.1", "127.0.0.1", "127.0.0.2", "::1"))
        for endpoint in proxy.endpoints:
            for name, (ipv4, ipv6) in ADDRESSES.items():
                self.assertEqual(dig(endpoint, "+short", name, "A", name, "AAAA").split(), [ipv4, ipv6])
            shown = dig(endpoint, "+dnssec", "example.com", "HTTPS", "example.com", "MX")
            self.assertIn("flags: qr rd ra; QUERY: 1, ANSWER: 1, AUTHORITY: 0", shown)
            self.assertIn("status: REFUSED", shown)
            self.assertNotIn("WARNING", shown)

    def test_lines_and_totals(self):
        process = self.demo_filter("--listen", "--policy", "--portal")
        filtering, mapped, policy, portal = process.addresses
        proxy = self.proxy({"filteringDNS": filtering, "policyServer": policy, "organizationId": "org42"})
        ask(proxy.endpoint, wire.query("first.example"))
        proxy.wait_for_line("Policy is fetched, success - true")
        ask(proxy.endpoint, wire.query("www.intranet.example"))
        proxy.wait_for_line(f"connect to DNS  {mapped}, q: Optional(\"intranet.example\")")
        with Client(endpoint_of(policy)) as client:
            client.send(b"no request")
            self.assertIn(mapped.encode(), client.ask(b'{"function": "localDNSMap","companyId": "a"b"}'))
        options = wire.option(65001, "org42") + wire.option(65004, "\x1b[2J\n")
        for endpoint, query in (
                (portal, wire.query("portal.example", additional=wire.opt(wire.option(65007, "1")))),
                (filtering, wire.query("a\x1b\n.example", 15, additional=wire.opt(options))),
                (filtering, wire.query(".", wire.AAAA, additional=wire.opt(b"\xfd\xe9\0\x09abc")))):
            ask(endpoint_of(endpoint), query)
        process.send_signal(signal.SIGINT)
        process.wait()
        self.assertLessEqual({"policy org42", 'policy a"b', "A www.intranet.example  no identity",
                              "portal A portal.example  65007=1", "AAAA .  no identity",
                              r"TYPE15 a\x1B\n.example  65001=org42 65004=\x1B[2J\n"}, set(process.output()))
        self.assertEqual(process.output()[-1], "queries 5, answered 4, refused 1")
