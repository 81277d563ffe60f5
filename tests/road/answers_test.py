"""Right answers at the client, whatever tool asks, over IPv4 and IPv6."""

import ipaddress

from roadlib import names, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import ask, dig, tool


class AnswersTest(RoadTest):
    def test_the_usual_tools_over_each_listen_address(self):
        proxy = self.proxy({"filteringDNS": self.demo_filter().address, **IDENTITY},
                           hosts=("127.0.0.1", "127.0.0.1", "127.0.0.2", "::1"))
        for endpoint in proxy.endpoints:
            for name in ("example.com", "a.very.long.name.with.many.labels.example"):
                self.assertEqual(dig(endpoint, "+short", name, "A").split(), [names.ipv4(name)])
                self.assertEqual(dig(endpoint, "+short", name, "AAAA").split(), [names.ipv6(name)])
            for edns in ("+noedns", "+dnssec", "+nsid"):
                shown = dig(endpoint, edns, "example.com", "A")
                self.assertIn("flags: qr rd ra; QUERY: 1, ANSWER: 1, AUTHORITY: 0", shown)
                self.assertNotIn("WARNING", shown)
            shown = tool("kdig", f"@{endpoint[0]}", "-p", str(endpoint[1]), "+retry=0", "example.com", "HTTPS")
            self.assertRegex(shown, r"example\.com\.\s+60\s+IN\s+(HTTPS|TYPE65)\s")
            self.assertIn("status: REFUSED", dig(endpoint, "example.com", "MX"))
            query = wire.query("ExAmPlE.cOm", identifier=0xFFFF)
            self.assertEqual(ask(endpoint, query),
                             wire.answer_to(query, ipaddress.ip_address(names.ipv4("example.com")).packed))


if __name__ == "__main__":
    main()
