"""The proxy with the addresses that are built in, and its link to the relay service."""

import os
import resource
import signal
import socket

from roadlib import namespace, wire
from roadlib.case import IDENTITY, RoadTest
from roadlib.client import Client
from roadlib.processes import PATIENCE, Process, poll

FILTERING = {"host": "127.0.0.2", "port": 81}  # the build's values
RELAY = ("127.0.0.1", 9898)
SYSTEM = "198.51.100.99"


def command(payload):
    return f'{{"cmdType":"command","payload":"{payload}"}}'.encode()


class BuiltInAddressesTest(RoadTest):
    def test_each_server(self):
        filtering = self.upstream(**FILTERING)
        process = self.started(Process([os.environ["QUILLET_PROXY"], "--defaults-dir", self.folder, "--control", "none"]))
        poll(lambda: 5300 in process.bound_ports(), "the port is bound")
        process.endpoint = ("127.0.0.1", 5300)
        self.query(process)
        self.assertEqual(sorted(dict(wire.injected_options(filtering.queries[0]))), [65004, 65006, 65007, 65015])
        safe_search = self.upstream(host="127.0.0.2", port=53)
        proxy = self.proxy({"allowAll": "true"}, arguments=("--safe-search",))
        queries = [self.query(proxy, additional=wire.opt(wire.option(10, b"12345678"))) for _ in range(2)]
        self.assertEqual(safe_search.queries, queries)


class LinkTest(RoadTest):
    def test_bypass_on_and_off(self):
        filtering, system = self.upstream(**FILTERING), self.upstream(lambda _: [], host=SYSTEM, port=53)
        relay = self.enterContext(socket.socket(socket.AF_INET, socket.SOCK_DGRAM))
        relay.settimeout(PATIENCE)
        relay.bind(RELAY)
        with namespace.resolv_conf(self.folder, f"nameserver {SYSTEM}"):
            proxy = self.proxy(IDENTITY, preparation=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (96, 96)))
            for number, reply in enumerate((b"{" * 60_000, command("bypassAllOn")), 1):
                relay.sendto(reply, relay.recvfrom(65535)[1])
                proxy.wait_for_line("*Xpc Udp Receive is complete*", number)
                self.reconfigure(proxy, IDENTITY)
            proxy.wait_for_line("Received command: bypassAllOn")
            _, link = relay.recvfrom(65535)
            for number in range(1, 101):  # of which 32 may wait for an answer; none costs the link its place
                with Client(proxy.endpoint) as client:
                    client.send(query := wire.query("a.example"))
                self.assertEqual(system.wait_for_queries(number)[-1], query)
            relay.sendto(command("bypassAllOff"), link)
            proxy.wait_for_line("Received command: bypassAllOff")
        self.assertEqual(filtering.queries, [])
        self.query(proxy)

    def test_nobody_reads_standard_output(self):
        reader, writer = os.pipe()
        os.close(reader)
        self.addCleanup(os.close, writer)
        self.upstream(**FILTERING)
        for preparation in (lambda: os.close(1), lambda: os.dup2(writer, 1)):
            proxy = self.proxy(IDENTITY, preparation=preparation)
            proxy.send_signal(signal.SIGHUP)
            self.query(proxy)


def setUpModule():
    namespace.enter()
    namespace.add_address(SYSTEM)
