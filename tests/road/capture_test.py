"""The whole machine's queries come to the proxy: quillet-capture, and what the proxy makes of what it captures.

Runs in a network of its own. Clients run as another user than the proxy, so it takes root, and nft."""

import contextlib
import os
import re
import socket
import sys
import threading

from roadlib import cgroup, namespace, wire
from roadlib.case import IDENTITY, RoadTest
from roadlib.client import TCPClient
from roadlib.processes import PATIENCE, address_text, family_of, run, tool

CAPTURE = os.environ["QUILLET_CAPTURE"]
CLIENT = 65534  # a user id without rights
APPLICATION = "org.example.Browser"
OWN_PORT = 5353
# A usual server of the machine, and one that is excepted.
SERVERS = {"192.0.2.9": "192.0.2.10", "2001:db8::9": "2001:db8::a"}
ALL_SERVERS = [*SERVERS, *SERVERS.values()]
ROADS = [(server, transport) for server in SERVERS for transport in ("+notcp", "+tcp")]
OFFERED = "handleNewUDPFlow, hash"  # the line of a flow that is accepted
REAL = {"+notcp": "198.51.100.1", "+tcp": "198.51.100.2"}  # what the usual servers answer
FILTERED = "198.51.100.3"  # what the filtering one does


def answering(address):
    rdata = bytes(int(part) for part in address.split("."))
    return lambda query: [wire.answer_to(query, rdata)]


def answer_by_tcp(listener):
    with contextlib.suppress(OSError):  # until it is shut down
        while True:
            with TCPClient(accepted=listener.accept()[0]) as peer:
                peer.send(wire.framed(*answering(REAL["+tcp"])(peer.receive())))


def as_client(*command):
    return ["setpriv", "--reuid", str(CLIENT), "--clear-groups", *command]


def asked(server, *arguments):
    """What `dig`, run by the client's user, gets; it takes an answer only from the address that it asked."""
    return tool(*as_client("dig", f"@{server}", "+tries=1", f"+timeout={PATIENCE:.0f}", "+short", *arguments)).strip()


def capture(*arguments, by=()):
    """Status, standard output and standard error."""
    done = run(*by, CAPTURE, *arguments)
    return done.returncode, done.stdout, done.stderr


class CaptureTest(RoadTest):
    def setUp(self):
        super().setUp()
        self.browser = cgroup.Cgroup(f"app.slice/app-{APPLICATION}-1.scope")
        self.addCleanup(self.browser.remove)
        for server in ALL_SERVERS:
            self.upstream(answering(REAL["+notcp"]), host=server, port=53)
            listener = self.enterContext(socket.create_server((server, 53), family=family_of(server)))
            self.addCleanup(listener.shutdown, socket.SHUT_RDWR)
            threading.Thread(target=answer_by_tcp, args=(listener,), daemon=True).start()

    def turn_on(self, *arguments):
        """What it says. Off again before anything else ends."""
        self.addCleanup(lambda: self.assertEqual(capture("off"), (0, "", "")))
        status, output, error = capture("on", "--port", str(OWN_PORT), *arguments)
        self.assertEqual((status, error), (0, ""))
        return output

    def captured_road(self, settings=None, user="0", **how):
        """A filtering server on port 53 too, a proxy that uses it, and capture."""
        filtering = self.upstream(answering(FILTERED), host="127.0.0.2", port=53)
        proxy = self.proxy({"filteringDNS": filtering.address, "addAppSenderId": "yes", **IDENTITY, **(settings or {})},
                           hosts=("127.0.0.1", "::1"), port=OWN_PORT, **how)
        excepted = [x for server in SERVERS.values() for x in ("--except", server)]
        self.assertEqual(self.turn_on("--user", user, *excepted), "")
        return filtering, proxy

    def assert_all_of_application(self, queries):
        found = [dict(wire.injected_options(query))[65005].decode() for query in queries]
        self.assertEqual(found, [APPLICATION] * len(queries))

    def test_every_query_until_it_is_off(self):
        filtering, proxy = self.captured_road()
        for count, (server, transport) in enumerate(ROADS, start=1):
            with self.subTest(server=server, transport=transport):
                with self.browser.inside():
                    self.assertEqual(asked(server, transport, "a.example"), FILTERED)
                self.assertEqual(asked(SERVERS[server], transport, "a.example"), REAL[transport])
                # The proxy's own query has not come back to it.
                self.assertEqual(len(filtering.wait_for_queries(count)), count)
                self.assertIn(f"remote: {address_text(server, 53)}", proxy.wait_for_line(OFFERED, count)[-1])
        self.assertEqual(len(proxy.wait_for_line(OFFERED)), len(ROADS))
        self.assert_all_of_application(filtering.queries)
        self.assertEqual(capture("off"), (0, "", ""))
        for server, transport in ROADS:
            self.assertEqual(asked(server, transport, "a.example"), REAL[transport])

    def test_declined_flows_go_to_the_server_asked(self):
        bypass = b'{"cmdType":"command","payload":"bypassAllOn"}'  # what the relay service says
        self.upstream(lambda said: [bypass] if b'"started"' in said else [], port=9898)
        with namespace.resolv_conf(self.folder, "nameserver 127.0.0.3"):  # where nobody is
            _, proxy = self.captured_road()
            proxy.wait_for_line("Received command: bypassAllOn")
            for server, transport in ROADS:
                self.assertEqual(asked(server, transport, "a.example"), REAL[transport])
        self.assertEqual(len(proxy.wait_for_line(OFFERED, 0)), 0)

    def test_without_the_right_to_see_who_was_asked_by_udp(self):
        without = ["setpriv", "--bounding-set", "-net_admin", "--inh-caps", "-net_admin"]
        filtering, proxy = self.captured_road(prefix=without)
        roads = (("+notcp", f"127.0.0.1:{OWN_PORT}"), ("+tcp", "192.0.2.9:53"))
        for count, (transport, remote) in enumerate(roads, start=1):
            with self.browser.inside():
                self.assertEqual(asked("192.0.2.9", transport, "a.example"), FILTERED)
            self.assertIn(f"remote: {remote}", proxy.wait_for_line(OFFERED, count)[-1])
        self.assert_all_of_application(filtering.queries)

    def test_one_socket_asks_two_servers(self):
        """Both exchanges end at the proxy's one address, so the kernel changes the client's port in the second."""
        filtering, proxy = self.captured_road()
        with self.browser.inside():
            os.seteuid(CLIENT)
            client = self.enterContext(socket.socket(socket.AF_INET, socket.SOCK_DGRAM))
            os.seteuid(0)
            client.settimeout(PATIENCE)
            client.bind(("192.0.2.1", 0))
            for server in ("192.0.2.9", "192.0.2.1"):
                query = wire.query("a.example")
                client.sendto(query, (server, 53))
                self.assertEqual(client.recvfrom(512), (answering(FILTERED)(query)[0], (server, 53)))
        self.assert_all_of_application(filtering.queries)
        ports = [re.search(r"192\.0\.2\.1:(\d+) ->", line).group(1) for line in proxy.wait_for_line(OFFERED, 2)]
        self.assertEqual(len(set(ports)), 2)

    def test_ipv6_only_where_the_proxy_serves_it(self):
        self.proxy({}, port=OWN_PORT)
        self.assertEqual(self.turn_on("--user", "0"), f"IPv6 is not captured: nothing serves [::1]:{OWN_PORT}\n")
        self.assertEqual(asked("2001:db8::9", "a.example"), REAL["+notcp"])

    def test_own_query_that_is_captured_costs_one_line(self):
        """The proxy's user is not excepted, and a policy maps a name to an address that leads back here."""
        _, proxy = self.captured_road({"mappedDomains": "[corp:192.0.2.9:53]"}, user="1")
        run(*as_client("dig", "@192.0.2.9", "+tries=1", "+timeout=1", "a.corp"))
        proxy.wait_for_line("bytes from our own socket")
        self.assertLess(len(proxy.lines), 100)
        self.assertEqual(len(proxy.wait_for_line(OFFERED)), 1)


class CaptureToolTest(RoadTest):
    def test_on_and_off_again(self):
        on = ("on", "--user", "0", "--except=192.0.2.0/24", "--except", "192.0.0.0/8", "--except", "2001:db8::/32")
        self.addCleanup(capture, "off")
        listings = set()
        for arguments, status, first in ((("status",), 3, "off\n"), (on, 0, "IPv6"), (("status",), 0, "on\n"), (on, 0, "IPv6"),
                                         (("status",), 0, "on\n"), (("off",), 0, ""), (("off",), 0, ""),
                                         (("status",), 3, "off\n")):
            with self.subTest(arguments=arguments):
                result = capture(*arguments)
                self.assertEqual((result[0], result[1][:len(first)], result[2]), (status, first, ""))
                if first == "on\n":
                    listings.add(tool("nft", "list", "ruleset"))
        self.assertEqual(len(listings), 1)
        self.assertEqual(tool("nft", "list", "ruleset"), "")

    def test_without_the_right_and_without_nft(self):
        calls = ("on", "--user", "0"), ("off",), ("status",)
        for arguments in calls:
            self.assertEqual(capture(*arguments, by=as_client()),
                             (1, "", "quillet-capture: not permitted: this takes root\n"))
        tool("mount", "--bind", self.folder, "/usr/sbin")
        self.addCleanup(tool, "umount", "/usr/sbin")
        for arguments in calls:
            self.assertEqual(capture(*arguments),
                             (1, "", "quillet-capture: nft is not there; it comes with the package nftables\n"))

    def test_wrong_use(self):
        wrong = [(), ("x",), ("off", "--port", "1"), ("on", "--port"), ("on", "--frob", "1")]
        wrong += [("on", "--port", port) for port in ("0", "65536", "08", "5300;")]
        wrong += [("on", "--user", user) for user in ("", "a b", "a\nflush ruleset")]
        wrong += [("on", "--except", network) for network in (
            "localhost", "1.2.3", "1.2.3.256", "1.2.3.4/33", "1.2.3.4/8/8", ":::", "::1::", "1:2:3:4:5:6:7:8:9",
            "1:2:3:4:5:6:7::8", "12345::", "::/129", "::1%lo", "1.2.3.4\naccept")]
        for arguments in wrong:
            with self.subTest(arguments=arguments):
                status, output, error = capture(*arguments)
                self.assertEqual((status, output, error[:17]), (2, "", "quillet-capture: "))
        self.assertEqual(capture("on", "--user", "nobody-of-this-name")[0], 1)


def setUpModule():
    namespace.enter()
    for needed in (as_client("true"), ["nft", "list", "ruleset"]):
        if run(*needed).returncode != 0:
            print(f"skipped: {needed[0]} does not work here")
            sys.exit(namespace.SKIPPED)
    cgroup.require()
    for server in ALL_SERVERS:
        namespace.add_address(server)
