"""The proxy as the DNS server of a whole machine: port 53, the C library's resolver, the built-in servers.

Runs in a network and a mount namespace of its own, where every port is free and /etc/resolv.conf may be
replaced; skipped where the system permits no such thing."""

import os

from roadlib import names, namespace, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import ask, tool
from roadlib.processes import Process, poll

NAMES = ("example.com", "www.example.org", "a.b.c.d.example")


class StubResolverTest(RoadTest):
    """`getent`, which asks as every program on the machine does."""

    def setUp(self):
        super().setUp()
        self.filter = self.demo_filter()
        self.road_proxy = self.proxy({"filteringDNS": self.filter.address, **IDENTITY},
                                     hosts=("127.0.0.1", "::1"), port=53)

    def use_servers(self, *lines):
        namespace.use_resolv_conf(self, *lines)

    def getent(self, database, name):
        return {line.split()[0] for line in tool("getent", database, name).splitlines()}

    def assert_resolves(self):
        for name in NAMES:
            self.assertEqual(self.getent("ahostsv4", name), {names.ipv4(name)})
            self.assertEqual(self.getent("ahostsv6", name), {names.ipv6(name)})
            self.assertEqual(self.getent("ahosts", name), {names.ipv4(name), names.ipv6(name)})

    def test_over_ipv4(self):
        self.use_servers("nameserver 127.0.0.1")
        self.assert_resolves()

    def test_over_ipv6(self):
        self.use_servers("nameserver ::1")
        self.assert_resolves()

    def test_with_edns(self):
        self.use_servers("nameserver 127.0.0.1", "options edns0 trust-ad")
        self.assert_resolves()

    def test_one_question_at_a_time(self):
        self.use_servers("nameserver 127.0.0.1", "options single-request-reopen timeout:5")
        self.assert_resolves()

    def test_dig_without_a_word(self):
        self.use_servers("nameserver 127.0.0.1")
        self.assertEqual(tool("dig", "+short", "example.com").split(), [names.ipv4("example.com")])


class BuiltInValuesTest(RoadTest):
    def test_nothing_configured(self):
        filtering = self.upstream(host="127.0.0.2", port=81)
        proxy = self.proxy()
        query = wire.query("example.com")
        self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
        options = dict(wire.injected_options(filtering.wait_for_queries(1)[0]))
        self.assertEqual(sorted(options), [65004, 65006, 65007, 65015])

    def test_second_server(self):
        second = self.upstream(host="127.0.0.3", port=53)
        proxy = self.proxy({"allowAll": "true"})
        query = wire.query("example.com")
        self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
        self.assertEqual(second.queries, [query])

    def test_local_network_server(self):
        local = self.upstream(host="127.0.0.4", port=53)
        proxy = self.proxy(arguments=("--source-app", "com.apple.opendirectoryd"))
        query = wire.query("example.com")
        self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
        self.assertEqual(local.queries, [query])

    def test_listen_address(self):
        server = self.upstream()
        path = self.vendor_file({"filteringDNS": server.address})
        process = Process([os.environ["QUILLET_PROXY"], "--defaults-dir", self.folder, "--vendor-data", path])
        self.addCleanup(process.stop)
        poll(lambda: 5300 in process.bound_ports(), "the port is bound")
        query = wire.query("example.com")
        self.assertEqual(ask(("127.0.0.1", 5300), query), wire.answer_to(query))


if __name__ == "__main__":
    namespace.enter()
    main()
