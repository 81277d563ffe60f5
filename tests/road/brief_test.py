"""The brief log: one line for each query, whatever becomes of it, and no other record of one.

Runs in a network of its own, where any address can be had; skipped where the system permits no such thing."""

import json
import re
import socket

from roadlib import namespace, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import Client, TCPClient, ask
from roadlib.processes import PATIENCE, Relay, free_port

RELAY, SYSTEM = ("127.0.0.1", 9898), "198.51.100.99"
BYPASS = b'{"cmdType":"command","payload":"bypassAllOn"}'
BRIEF = ("--log", "brief", "--source-app")


def said(proxy):
    """The records so far, but the times in them."""
    return [re.sub(r" ms=\d+\.\d$", " ms=N", line.split("] ", 1)[-1]) for line in list(proxy.lines)]


class OutcomeTest(RoadTest):
    def assert_told(self, proxy, *lines):
        """The last queries that were told of."""
        proxy.wait_for_line(f"query {lines[-1].split()[0]} ")
        told = [text for text in said(proxy) if text.startswith("query ")]
        self.assertEqual(told[-len(lines):], [f"query {line} ms=N" for line in lines])

    def test_each_rule(self):
        server = self.upstream()
        nobody = f"127.0.0.1:{free_port()}"
        policy = {"status": True, "dnsServerSettings": [{"assignedDomains": ["b.example"], "dnsServerIP": server.address}]}
        domains = self.upstream(lambda _: [json.dumps(policy).encode()])
        for rule, application, settings in (
                (1, "com.apple.nsupdate", {"localNetworkDNS": server.address}),
                (2, "org.allowed", {"secondDNS": server.address, "allowPackages": "allowed"}),
                (3, "app", {"mappedDomains": f"[b.example:{server.address}]"}),
                (4, "app", {"policyServer": domains.address}),
                (5, "my app=x", {"filteringDNS": server.address})):
            with self.subTest(rule=rule):
                proxy = self.proxy({"filteringDNS": nobody, **IDENTITY, **settings}, arguments=(*BRIEF, application))
                if rule == 4:  # fetched for the first query
                    with Client(proxy.endpoint) as client:
                        client.send(wire.query("first"))
                        proxy.wait_for_line("Policy is fetched, success - true")
                self.query(proxy, "www.b.example", wire.AAAA)
                with TCPClient(proxy.endpoint) as client:
                    client.ask(wire.query("tcp.b.example"))
                shown = application.replace(" ", r"\x20").replace("=", r"\x3D")
                what = f"app={shown} rule={rule} server={server.address} rcode=NOERROR"
                self.assert_told(proxy, f"www.b.example AAAA {what}", f"tcp.b.example A {what}")

    def test_given_up(self):
        nobody = f"127.0.0.1:{free_port()}"
        silent = self.upstream(lambda _: [])
        what = "app=app rule=%d server=%s rcode=none"
        proxy = self.proxy({"filteringDNS": silent.address, "mappedDomains": f"[refused:{nobody}]", **IDENTITY},
                           arguments=(*BRIEF, "app"))
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
            client.sendto(wire.query("refused"), proxy.endpoint)
            self.assert_told(proxy, "refused A " + what % (3, nobody))
            for number, query in enumerate((wire.query("a=b\n.example", 65280), b"garbage"), 1):
                client.sendto(query, proxy.endpoint)
                silent.wait_for_queries(number)
        proxy.stop()
        self.assertEqual(said(proxy)[-2:], [rf"query a\x3Db\x0A.example TYPE65280 {what % (5, silent.address)} ms=N",
                                            f"query - - {what % (5, silent.address)} ms=N"])

    def test_declined(self):
        self.upstream(lambda query: [query[:2] + b"\x81\x83" + query[4:]], host=SYSTEM, port=53)
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as relay:
            relay.bind(RELAY)
            relay.settimeout(PATIENCE)
            with namespace.resolv_conf(self.folder, f"nameserver {SYSTEM}"):
                proxy = self.proxy(IDENTITY, arguments=(*BRIEF, "app"))
                relay.sendto(BYPASS, relay.recvfrom(65535)[1])
                proxy.wait_for_line("Received command: bypassAllOn")
                ask(proxy.endpoint, wire.query("a.example"))
        self.assert_told(proxy, "a.example A app=app rule=0 server=system rcode=NXDOMAIN")

    def test_a_report_query_prints_its_report(self):
        _, proxy = self.road(arguments=(*BRIEF, "app"))
        self.query(proxy, "quillet_osx_filter_p_app_.example")
        proxy.wait_for_line("query quillet_osx_filter_p_app_.example A")
        for line in ("vendorData: ", "----> start of flow manager report <----", "->flow 1, isFinished: false"):
            proxy.wait_for_line(line)


class RelayTest(RoadTest):
    def test_what_clients_say_and_no_more(self):
        relay = self.started(Relay(self.folder, self.folder, ("--log", "brief", "--shell", "/bin/sh", "--flush-command",
                                                              "echo flushed")))
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
            for datagram in (b"&*ALhello", b'{"cmdType":"notification","payload":"started"}', BYPASS, b"&*requestCU"):
                client.sendto(datagram, RELAY)
            client.settimeout(PATIENCE)
            client.recv(100)
        relay.wait_for_line("request CU received")
        self.assertEqual(relay.said(), [
            "*** XPC and UDP started_ ***", "*** XPC listener resumed ***", "Agent log: hello",
            "got notification from Ext: started", "got command from Ext: bypassAllOn", "request CU received, cu: "])


if __name__ == "__main__":
    namespace.enter()
    namespace.add_address(SYSTEM)
    main()
