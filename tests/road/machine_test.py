"""The proxy as the DNS server of a whole machine: port 53, the C library's resolver, the built-in servers.

Runs in a network and a mount namespace of its own, where every port is free and /etc/resolv.conf may be
replaced; skipped where the system permits no such thing."""

import os

from roadlib import names, namespace, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import ask, tool
from roadlib.processes import Process, poll


class MachineTest(RoadTest):
    def test_programs_of_the_machine(self):
        """`getent` asks as every program on the machine does."""
        self.proxy({"filteringDNS": self.demo_filter().address, **IDENTITY}, hosts=("127.0.0.1", "::1"), port=53)
        for lines in (("nameserver ::1",), ("nameserver 127.0.0.1", "options edns0 trust-ad"),
                      ("nameserver 127.0.0.1", "options single-request-reopen timeout:5")):
            with self.subTest(lines=lines), namespace.resolv_conf(self.folder, *lines):
                for name in ("example.com", "a.b.c.d.example"):
                    found = {line.split()[0] for line in tool("getent", "ahosts", name).splitlines()}
                    self.assertEqual(found, {names.ipv4(name), names.ipv6(name)})
                self.assertEqual(tool("dig", "+short", "example.com").split(), [names.ipv4("example.com")])

    def test_built_in_addresses(self):
        query = wire.query("example.com")
        filtering = self.upstream(host="127.0.0.2", port=81)
        process = Process([os.environ["QUILLET_PROXY"], "--defaults-dir", self.folder])
        self.addCleanup(process.stop)
        poll(lambda: 5300 in process.bound_ports(), "the port is bound")
        self.assertEqual(ask(("127.0.0.1", 5300), query), wire.answer_to(query))
        options = dict(wire.injected_options(filtering.wait_for_queries(1)[0]))
        self.assertEqual(sorted(options), [65004, 65006, 65007, 65015])
        for host, settings, app in (("127.0.0.3", {"allowAll": "true"}, "app"),
                                    ("127.0.0.4", None, "com.apple.opendirectoryd")):
            server = self.upstream(host=host, port=53)
            proxy = self.proxy(settings, arguments=("--source-app", app))
            self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
            self.assertEqual(server.queries, [query])


if __name__ == "__main__":
    namespace.enter()
    main()
