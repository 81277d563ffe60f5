"""The proxy as the DNS server of a whole machine: port 53, the C library's resolver, the built-in servers.

Runs in a network and a mount namespace of its own, where every port is free and /etc/resolv.conf may be
replaced; skipped where the system permits no such thing."""

import fcntl
import os
import shutil
import socket
import struct
import subprocess
import sys

from roadlib import names, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import ask, tool
from roadlib.processes import Process, poll

SKIPPED = 77  # the test runner's word for it
INSIDE = "QUILLET_INSIDE_NAMESPACE"
NAMES = ("example.com", "www.example.org", "a.b.c.d.example")


def enter_namespace():
    """Starts this test again inside; does not come back."""
    namespace = ["unshare", "--net", "--mount", *([] if os.geteuid() == 0 else ["--map-root-user"])]
    if not shutil.which("unshare") or subprocess.run([*namespace, "true"], capture_output=True,
                                                     check=False).returncode != 0:
        print("skipped: no namespaces here")
        sys.exit(SKIPPED)
    os.execvpe("unshare", [*namespace, sys.executable, *sys.argv], {**os.environ, INSIDE: "1"})


def bring_loopback_up():
    """Without an address beyond the loopback ones the C library would not ask at all."""
    get_flags, set_flags, set_address = 0x8913, 0x8914, 0x8916  # SIOCGIFFLAGS, SIOCSIFFLAGS, SIOCSIFADDR
    up = 1  # IFF_UP
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as s:
        request = fcntl.ioctl(s, get_flags, struct.pack("16sH22x", b"lo", 0))
        flags = struct.unpack_from("H", request, 16)[0]
        fcntl.ioctl(s, set_flags, struct.pack("16sH22x", b"lo", flags | up))
        address = socket.inet_pton(socket.AF_INET, "192.0.2.1")
        fcntl.ioctl(s, set_address, struct.pack("16sH2x4s16x", b"lo:1", socket.AF_INET, address))
    with socket.socket(socket.AF_INET6, socket.SOCK_DGRAM) as s:
        address = socket.inet_pton(socket.AF_INET6, "2001:db8::1")
        fcntl.ioctl(s, set_address, struct.pack("=16sIi", address, 128, socket.if_nametoindex("lo")))


class StubResolverTest(RoadTest):
    """`getent`, which asks as every program on the machine does."""

    def setUp(self):
        super().setUp()
        self.filter = self.demo_filter()
        self.road_proxy = self.proxy({"filteringDNS": self.filter.address, **IDENTITY},
                                     hosts=("127.0.0.1", "::1"), port=53)

    def use_servers(self, *lines):
        path = os.path.join(self.folder, "resolv.conf")
        with open(path, "w", encoding="ascii") as file:
            file.writelines(f"{line}\n" for line in lines)
        tool("mount", "--bind", path, "/etc/resolv.conf")
        self.addCleanup(tool, "umount", "/etc/resolv.conf")

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
    if INSIDE not in os.environ:
        enter_namespace()
    bring_loopback_up()
    main()
