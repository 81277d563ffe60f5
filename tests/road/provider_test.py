"""What the provider does beside its queries: the policy and the mapped domains, the captive portal, the link to
the relay service.

Runs in a network of its own, where ports 81, 2800 and 9898 are free and any address can be had; skipped where
the system permits no such thing."""

import json
import os
import resource
import signal
import socket

from roadlib import namespace, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import Client
from roadlib.processes import PATIENCE

FILTERING, POLICY, RELAY = ("127.0.0.2", 81), ("127.0.0.5", 2800), ("127.0.0.1", 9898)  # the build's values
WIKI, LAB, NOBODY, SYSTEM = "198.51.100.53", "198.51.100.54", "198.51.100.55", "198.51.100.99"
PORTALS = ("198.51.100.1", "198.51.100.2", "198.51.100.3")


def command(payload):
    return f'{{"cmdType":"command","payload":"{payload}"}}'.encode()


class ProviderTest(RoadTest):
    def setUp(self):
        super().setUp()
        self.filtering = self.upstream(host=FILTERING[0], port=FILTERING[1])


class PolicyTest(ProviderTest):
    def test_domains_go_their_own_ways(self):
        wiki = self.upstream(host=WIKI, port=53)
        lab = self.upstream(host=LAB, port=5300)
        policy = {"status": True, "dnsServerSettings": [{"assignedDomains": ["wiki.corp"], "dnsServerIP": WIKI},
                                                        {"assignedDomains": ["lab"], "dnsServerIP": NOBODY}]}
        self.upstream(lambda _: [json.dumps(policy).encode()], host=POLICY[0], port=POLICY[1])
        # A malformed entry spoils nothing else.
        proxy = self.proxy({**IDENTITY, "mappedDomains": f"[none,lab:{lab.address},portal:{NOBODY}]"})
        before = self.query(proxy, "www.wiki.corp")  # routed before the policy is there
        proxy.wait_for_line("Policy is fetched, success - true")
        mapped = [self.query(proxy, name) for name in ("www.wiki.corp", "a.b.wiki.corp", "wiki.corporation")]
        local = self.query(proxy, "a.lab")
        other = self.query(proxy, "wiki.example")
        self.assertEqual((wiki.queries, lab.queries), (mapped, [local]))  # byte for byte: no identity
        filtered = self.filtering.wait_for_queries(2)
        self.assertEqual([query[:2] for query in filtered], [before[:2], other[:2]])
        self.assertEqual([dict(wire.injected_options(query))[65001] for query in filtered], [b"org42"] * 2)


class CaptivePortalTest(ProviderTest):
    def test_each_address_once(self):
        portals = [self.upstream(host=host, port=81) for host in PORTALS]
        proxy = self.proxy({**IDENTITY, "captivePortalIp": ",".join((*PORTALS, "", "nonsense"))})
        self.assertEqual([portal.queries for portal in portals], [[], [], []])  # nothing at the start
        for _ in range(10):
            self.query(proxy)
        proxy.wait_for_line("[CapPortalHelper]:, udp received, udp - DNS Response", 3)
        self.query(proxy)
        received = [portal.queries for portal in portals]
        self.assertEqual(received, [received[0][:1]] * 3)  # one identifier for all
        self.assertEqual(wire.injected_options(received[0][0]), [(65007, b"1")])


class LinkTest(ProviderTest):
    def test_bypass_on_and_off(self):
        system = self.upstream(lambda _: [], host=SYSTEM, port=53)
        relay = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.addCleanup(relay.close)
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
        self.assertEqual(self.filtering.queries, [])
        self.query(proxy)

    def test_nobody_reads_standard_output(self):
        reader, writer = os.pipe()
        os.close(reader)
        self.addCleanup(os.close, writer)
        for preparation in (lambda: os.close(1), lambda: os.dup2(writer, 1)):
            proxy = self.proxy(IDENTITY, preparation=preparation)
            proxy.send_signal(signal.SIGHUP)
            self.query(proxy)


if __name__ == "__main__":
    namespace.enter()
    for each in (WIKI, LAB, SYSTEM, NOBODY, *PORTALS):
        namespace.add_address(each)
    main()
