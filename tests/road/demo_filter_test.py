"""The demo filtering service by itself."""

import signal
import socket

from roadlib import names, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import Client, ask


def endpoint_of(address):
    host, port = address.rsplit(":", 1)
    return host, int(port)


class DemoFilterTest(RoadTest):
    def test_line_of_a_query_and_totals(self):
        process = self.demo_filter()
        options = wire.option(65001, "org42") + wire.option(65004, "\x1b[2J\n")
        rows = (
            (wire.query("example.com", additional=wire.opt(options, owner=b"\x010\0")),
             r"A example.com  65001=org42 65004=\x1B[2J\n"),
            (wire.query("example.com", wire.HTTPS, additional=wire.opt()), "HTTPS example.com  no identity"),
            (wire.query("a\x1b[2J\n.example", 15), r"TYPE15 a\x1B[2J\n.example  no identity"),
            (wire.query(".", wire.AAAA), "AAAA .  no identity"),
            (wire.query("example.com", additional=wire.opt(b"\xfd\xe9\0\x09abc")), "A example.com  no identity"),
        )
        for query, _ in rows:
            ask(endpoint_of(process.address), query)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(), 0)
        self.assertEqual(process.output()[1:],
                         [line for _, line in rows] + ["queries 5, answered 4, refused 1"])

    def test_policy_and_portal(self):
        process = self.demo_filter("--listen", "--policy", "--portal")
        filtering, mapped, policy, portal = process.addresses
        proxy = self.proxy({"filteringDNS": filtering, "policyServer": policy, **IDENTITY})
        ask(proxy.endpoint, wire.query("first.example"))
        proxy.wait_for_line("Policy is fetched, success - true")
        query = wire.query("www.intranet.example")
        self.assertEqual(ask(proxy.endpoint, query),
                         wire.answer_to(query, socket.inet_aton(names.ipv4("www.intranet.example"))))
        proxy.wait_for_line(f"connect to DNS  {mapped}, q: Optional(\"intranet.example\")")
        ask(endpoint_of(portal), wire.query("portal.example", additional=wire.opt(wire.option(65007, "1"))))
        with Client(endpoint_of(policy)) as client:
            client.send(b"no request")
            self.assertIn(f'"dnsServerIP": "{mapped}"'.encode(),
                          client.ask(b'{"function": "localDNSMap","companyId": "a"b"}'))
        process.stop()
        lines = [line.split("  ")[0] for line in process.output()]
        for line in ("policy org42", 'policy a"b', "portal A portal.example", "A www.intranet.example"):
            self.assertIn(line, lines)


if __name__ == "__main__":
    main()
