"""The demo filtering service, and the proxy with the policy that it hands out."""

import signal

from roadlib import wire
from roadlib.case import RoadTest, main
from roadlib.client import Client, ask


def endpoint_of(address):
    host, port = address.rsplit(":", 1)
    return host, int(port)


class DemoFilterTest(RoadTest):
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
        self.assertEqual(process.wait(), 0)
        lines = process.output()
        for line in ("policy org42", 'policy a"b', "A www.intranet.example  no identity",
                     "portal A portal.example  65007=1", r"TYPE15 a\x1B\n.example  65001=org42 65004=\x1B[2J\n",
                     "AAAA .  no identity"):
            self.assertIn(line, lines)
        self.assertEqual(lines[-1], "queries 5, answered 4, refused 1")


if __name__ == "__main__":
    main()
