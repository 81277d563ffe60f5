"""The proxy for safe search: every byte unchanged to the filtering service's standard DNS port.

Runs in a network of its own, where port 53 is free; skipped where the system permits no such thing."""

from roadlib import namespace, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import ask

FILTERING, POLICY = "127.0.0.2", ("127.0.0.5", 2800)  # the build's values


class SafeSearchTest(RoadTest):
    def setUp(self):
        super().setUp()
        self.filtering = self.upstream(host=FILTERING, port=53)

    def safe_search(self, settings, *arguments):
        return self.proxy(settings, arguments=("--safe-search", *arguments))

    def test_every_byte_unchanged(self):
        other = self.upstream()
        settings = {**IDENTITY, "filteringDNS": other.address, "secondDNS": other.address, "allowAll": "true",
                    "localNetworkDNS": other.address, "mappedDomains": f"[corp:{other.address}]"}
        proxy = self.safe_search(settings, "--source-app", "com.apple.nsupdate")
        queries = [wire.query("www.a.corp"), wire.query("search.example", wire.HTTPS),
                   wire.query("a.example", wire.AAAA, additional=wire.opt(wire.option(10, b"12345678")))]
        for query in queries:
            self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
        self.assertEqual(self.filtering.queries, queries)
        self.assertEqual(other.queries, [])

    def test_policy_is_not_fetched_at_the_first_flow(self):
        policy = self.upstream(lambda _: [b"{}"], host=POLICY[0], port=POLICY[1])
        proxy = self.safe_search(IDENTITY)
        query = wire.query("a.example")
        ask(proxy.endpoint, query)
        self.assertEqual(policy.queries, [])
        ask(proxy.endpoint, query)
        policy.wait_for_queries(1)


if __name__ == "__main__":
    namespace.enter()
    main()
