"""The proxy for safe search: every byte unchanged to the filtering service's standard DNS port.

Runs in a network of its own, where port 53 is free; skipped where the system permits no such thing."""

from roadlib import namespace, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import Client, ask
from roadlib.upstream import Upstream


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
        queries = [wire.query("www.a.corp"), wire.query("search.example", wire.HTTPS),
                   wire.query("a.example", wire.AAAA, additional=wire.opt(wire.option(10, b"12345678")))]
        for number, query in enumerate(queries):
            self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
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
