"""Queries by TCP: the usual tools, many queries on one connection, clients that misbehave, and the system's own
server for what the provider declines.

Runs in a network of its own, where /etc/resolv.conf may be replaced; skipped where the system permits no such
thing."""

import contextlib
import random
import socket
import subprocess
import threading

import dns.message
import dns.query

from roadlib import namespace, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import TCPClient, ask, dig, tool
from roadlib.processes import PATIENCE
from roadlib.upstream import by_name

RELAY, SYSTEM = ("127.0.0.1", 9898), "198.51.100.99"


class ToolsTest(RoadTest):
    def setUp(self):
        super().setUp()
        self.endpoint = self.proxy({"filteringDNS": self.demo_filter(quiet=True).address, **IDENTITY},
                                   hosts=("127.0.0.1", "::1")).endpoint

    def test_dig_kdig_and_dnspython(self):
        name, ipv4, ipv6 = "example.com", "198.19.20.198", "2001:db8::5768:4663:4e27:14c6"
        self.assertEqual(dig(self.endpoint, "+tcp", "+keepopen", "+short", name, "A", name, "AAAA").split(), [ipv4, ipv6])
        shown = tool("kdig", "@127.0.0.1", "-p", str(self.endpoint[1]), "+tcp", "+keepopen", "+retry=0", name, "A",
                     name, "AAAA")
        self.assertEqual([shown.count(text) for text in (ipv4, ipv6, "(TCP)", "WARNING")], [1, 1, 2, 0])
        with socket.create_connection(self.endpoint, PATIENCE) as connection:
            for rtype, address in (("A", ipv4), ("AAAA", ipv6)):
                answer = dns.query.tcp(dns.message.make_query(name, rtype, use_edns=True), "", PATIENCE, sock=connection)
                self.assertEqual([str(data) for data in answer.answer[0]], [address])

    def test_dnsperf(self):
        names = self.vendor_file("".join(f"h{number}.example A\n" for number in range(100)), "names")
        done = subprocess.run(["dnsperf", "-m", "tcp", "-s", self.endpoint[0], "-p", str(self.endpoint[1]), "-d", names,
                               "-c", "20", "-n", "10", "-t", str(PATIENCE)], stdin=subprocess.DEVNULL, text=True,
                              capture_output=True, check=True, timeout=10 * PATIENCE)
        self.assertNotIn("Warning", done.stdout)
        self.assertRegex(done.stdout, r"Queries completed:\s+1000 ")
        self.assertRegex(done.stdout, r"Reconnections:\s+0\b")


class ConnectionTest(RoadTest):
    def test_a_hundred_queries_on_one_connection_beside_another_of_the_same_identifiers(self):
        upstream, proxy = self.road()
        queries = [[wire.query(f"{which}{number}.example", identifier=number) for number in range(100)] for which in "ab"]
        with TCPClient(proxy.endpoint) as one, TCPClient(proxy.endpoint) as other:
            one.send(b"".join(map(wire.framed, queries[0])))
            for query in queries[1]:
                other.send(wire.framed(query))
            for client, own in zip((one, other), queries):
                client.socket.shutdown(socket.SHUT_WR)
                self.assertEqual(sorted(client.receive_all()), sorted(map(wire.answer_to, own)))
        self.assertEqual(len(upstream.queries), 200)

    def test_a_truncated_answer_goes_back_as_it_came(self):
        query = wire.query("a.example")
        truncated = query[:2] + b"\x83\x80" + wire.answer_to(query)[4:]
        upstream, proxy = self.road(lambda _: [truncated])
        with TCPClient(proxy.endpoint) as client:
            self.assertEqual(client.ask(query), truncated)
            proxy.wait_for_line(f"127.0.0.1:{client.socket.getsockname()[1]} -> 127.0.0.1:{proxy.endpoint[1]}, 1 datagrams>")
        self.assertEqual(dict(wire.injected_options(upstream.queries[0]))[65001], b"org42")

    def test_clients_that_misbehave_cost_nobody_else_anything(self):
        upstream, proxy = self.road(by_name("silent", lambda query: []))
        noise = random.Random(1)
        with contextlib.ExitStack() as stack:
            for octets in (b"", b"\0", b"\0\x30half", b"\0\0", b"\xff\xff" + noise.randbytes(60_000),
                           noise.randbytes(60_000), b"GET / HTTP/1.1\r\n\r\n", wire.framed(b"\0" * 12),
                           wire.framed(wire.query("silent.example")) * 1000):
                for _ in range(30):  # more than may be connected, all in all
                    with contextlib.suppress(ConnectionError):
                        stack.enter_context(TCPClient(proxy.endpoint)).send(octets)
                with TCPClient(proxy.endpoint) as good, self.subTest(octets=octets[:40]):
                    query = wire.query("good.example")
                    self.assertEqual(good.ask(query), wire.answer_to(query))
                self.query(proxy, "udp.example")
            self.assertLess(proxy.descriptors(), 2400)
        self.assertTrue(upstream.queries)


class DeclinedTest(RoadTest):
    def test_the_systems_own_server_is_asked_by_tcp(self):
        namespace.add_address(SYSTEM)
        system = socket.create_server((SYSTEM, 53))
        relay = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        for each in (system, relay):
            self.addCleanup(each.close)
            each.settimeout(PATIENCE)
        relay.bind(RELAY)
        asked = []

        def serve():
            with TCPClient(accepted=system.accept()[0]) as peer:
                asked.append(peer.receive())
                peer.send(wire.framed(wire.answer_to(asked[0])))
        server = threading.Thread(target=serve)
        with namespace.resolv_conf(self.folder, f"nameserver {SYSTEM}"):
            upstream, proxy = self.road()
            relay.sendto(b'{"cmdType":"command","payload":"bypassAllOn"}', relay.recvfrom(65535)[1])
            proxy.wait_for_line("Received command: bypassAllOn")
            server.start()
            query = wire.query("a.example")
            with TCPClient(proxy.endpoint) as client:
                self.assertEqual(client.ask(query), wire.answer_to(query))
            server.join(PATIENCE)
        self.assertEqual((asked, upstream.queries), ([query], []))


if __name__ == "__main__":
    namespace.enter()
    main()
