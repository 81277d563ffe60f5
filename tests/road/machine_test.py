"""The proxy with the addresses that are built in, and its variant for safe search.

Runs in a network of its own, where every port is free; skipped where the system permits no such thing."""

import os

from roadlib import namespace, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import Client
from roadlib.processes import Process, poll
from roadlib.upstream import Upstream


class BuiltInAddressesTest(RoadTest):
    def test_built_in_addresses(self):
        filtering = self.upstream(host="127.0.0.2", port=81)
        process = self.started(Process([os.environ["QUILLET_PROXY"], "--defaults-dir", self.folder, "--control", "none"]))
        poll(lambda: 5300 in process.bound_ports(), "the port is bound")
        process.endpoint = ("127.0.0.1", 5300)
        self.query(process)
        self.assertEqual(sorted(dict(wire.injected_options(filtering.queries[0]))), [65004, 65006, 65007, 65015])
        for host, settings, app in (("127.0.0.3", {"allowAll": "true"}, "app"),
                                    ("127.0.0.4", None, "com.apple.opendirectoryd")):
            server = self.upstream(host=host, port=53)
            query = self.query(self.proxy(settings, arguments=("--source-app", app)))
            self.assertEqual(server.queries, [query])


class SafeSearchTest(RoadTest):
    def test_every_byte_unchanged_and_the_policy_from_the_second_flow_on(self):
        filtering = Upstream(host="127.0.0.2", port=53)  # the build's value
        policy = self.upstream(lambda _: [b"{}"])
        other = self.upstream()
        proxy = self.proxy({**IDENTITY, "filteringDNS": other.address, "secondDNS": other.address, "allowAll": "true",
                            "localNetworkDNS": other.address, "mappedDomains": f"[corp:{other.address}]",
                            "policyServer": policy.address},
                           arguments=("--safe-search", "--source-app", "com.apple.nsupdate"))
        proxy.wait_for_line("startProxy, instance id: <SafeSearchDNSProxyProvider: 1>")
        queries = []
        for number, name in enumerate(("www.a.corp", "search.example", "a.example")):
            queries.append(self.query(proxy, name, additional=wire.opt(wire.option(10, b"12345678"))))
            self.assertEqual(len(policy.wait_for_queries(min(number, 1))), min(number, 1))
        self.assertEqual(filtering.queries, queries)
        self.assertFalse(any("values for inject" in line for line in list(proxy.lines)))
        filtering.close()
        with Client(proxy.endpoint) as client:
            client.send(queries[0])
            proxy.wait_for_line("[SafeSearchDNSProxyProvider]: datagram data is nil")
        self.assertEqual(other.queries, [])


if __name__ == "__main__":
    namespace.enter()
    main()
