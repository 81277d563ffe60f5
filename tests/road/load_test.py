"""A hundred thousand queries: none lost, none answered twice, none to the wrong client, nothing left behind."""

import ipaddress
import os
import re
import select
import struct
import subprocess
import unittest

from roadlib import names, wire
from roadlib.case import IDENTITY, IS_SANITIZED, LOAD, RoadTest, main
from roadlib.client import Client
from roadlib.processes import PATIENCE, SLOWNESS, poll

QUERIES = int(100_000 * LOAD)
SOCKETS = 200
# What may differ between two equal loads: pages of the allocator, not what a leak of even 64 bytes a query
# would leave behind.
MEMORY_MARGIN_KIB = 4096
DESCRIPTOR_MARGIN = 8


class LoadTest(RoadTest):
    def setUp(self):
        super().setUp()
        self.filter = self.demo_filter(quiet=True)
        self.road_proxy = self.proxy({"filteringDNS": self.filter.address, **IDENTITY}, discard=True)

    def dnsperf(self, queries):
        """Runs dnsperf over `SOCKETS` sockets; its counts of sent, completed, lost."""
        names_file = os.path.join(self.folder, "names")
        with open(names_file, "w", encoding="ascii") as file:
            file.writelines(f"h{number}.example {('A', 'AAAA', 'HTTPS')[number % 3]}\n"
                            for number in range(1000))
        host, port = self.road_proxy.endpoint
        done = subprocess.run(
            ["dnsperf", "-s", host, "-p", str(port), "-d", names_file, "-c", str(SOCKETS), "-W",
             "-n", str(queries // 1000), "-t", str(PATIENCE)],
            stdin=subprocess.DEVNULL, capture_output=True, text=True, check=True, timeout=30 * PATIENCE)
        self.assertNotIn("Warning", done.stdout)  # an answer that belongs to no query, say
        self.assertRegex(done.stdout, rf"NOERROR {queries} ")
        return [int(re.search(rf"Queries {what}:\s+(\d+)", done.stdout).group(1))
                for what in ("sent", "completed", "lost")]

    def settled_descriptors(self):
        """What is open once the last flows are closed."""
        idle = self.idle_descriptors
        poll(lambda: self.road_proxy.descriptors() <= idle + DESCRIPTOR_MARGIN, "the flows are closed")
        return self.road_proxy.descriptors()

    @unittest.skipIf(QUERIES < 1000, "no load in this build")
    def test_dnsperf(self):
        self.idle_descriptors = self.road_proxy.descriptors()
        self.assertEqual(self.dnsperf(QUERIES), [QUERIES, QUERIES, 0])  # warms up, and counts as well
        self.settled_descriptors()
        warm = self.road_proxy.resident_kib()

        self.assertEqual(self.dnsperf(QUERIES), [QUERIES, QUERIES, 0])
        self.settled_descriptors()
        if not IS_SANITIZED:  # a sanitizer keeps what was freed
            self.assertLess(self.road_proxy.resident_kib(), warm + MEMORY_MARGIN_KIB)

        self.assertEqual(self.filter.totals(), [2 * QUERIES, 2 * QUERIES, 0])

    def test_each_answer_reaches_the_socket_that_asked(self):
        checker = Checker(self.road_proxy.endpoint, SOCKETS)
        self.addCleanup(checker.close)
        checker.run(QUERIES, window=100)
        self.assertEqual(checker.wrong, [])
        self.assertEqual((checker.answered, checker.outstanding), (QUERIES, {}))
        self.assertEqual(self.filter.totals(), [QUERIES, QUERIES, 0])

    def test_bursts(self):
        # Many datagrams of one socket in one read: one flow, whose answers come in any order.
        checker = Checker(self.road_proxy.endpoint, 4)
        self.addCleanup(checker.close)
        checker.run(QUERIES // 10, window=128)
        self.assertEqual(checker.wrong, [])
        self.assertEqual((checker.answered, checker.outstanding), (QUERIES // 10, {}))


class Checker:
    """Asks a new name with every query and knows which socket each answer belongs to."""

    def __init__(self, endpoint, sockets):
        self.outstanding = {}  # (socket number, identifier) -> name
        self.wrong = []
        self.answered = 0
        self._asked = 0
        self._clients = [Client(endpoint) for _ in range(sockets)]
        self._poll = select.epoll()
        self._number_of = {}
        for number, client in enumerate(self._clients):
            client.socket.setblocking(False)
            self._number_of[client.socket.fileno()] = number
            self._poll.register(client.socket, select.EPOLLIN)

    def close(self):
        self._poll.close()
        for client in self._clients:
            client.socket.close()

    def run(self, queries, window):
        """Asks `queries` times, at most `window` at once, until all are answered or nothing comes for long.
        Then takes what is still on its way, which would be a second answer."""
        while self._asked < queries or self.outstanding:
            while self._asked < queries and len(self.outstanding) < window:
                self._ask()
            if not self._take(PATIENCE):
                return
        while self._take(0.2 * SLOWNESS):
            pass

    def _ask(self):
        number = self._asked % len(self._clients)
        identifier = self._asked // len(self._clients) % 0x10000
        name = f"q{self._asked}.s{number}.example"
        self.outstanding[number, identifier] = name
        self._asked += 1
        self._clients[number].send(wire.query(name, wire.AAAA, identifier))

    def _take(self, seconds):
        events = self._poll.poll(seconds)
        for descriptor, _ in events:
            number = self._number_of[descriptor]
            client = self._clients[number].socket
            while True:
                try:
                    self._check(number, client.recv(65535))
                except BlockingIOError:
                    break
        return bool(events)

    def _check(self, number, answer):
        identifier = struct.unpack_from("!H", answer)[0]
        name = self.outstanding.pop((number, identifier), None)
        if name is None:
            self.wrong.append(("nobody asked", number, answer.hex()))
            return
        query = wire.query(name, wire.AAAA, identifier)
        if answer != wire.answer_to(query, ipaddress.ip_address(names.ipv6(name)).packed, wire.AAAA):
            self.wrong.append((name, number, answer.hex()))
            return
        self.answered += 1


if __name__ == "__main__":
    main()
