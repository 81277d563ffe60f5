"""A hundred thousand queries: none lost, none answered twice, nothing left behind; in the brief log a line each."""

import os
import re
import subprocess
import unittest

from roadlib import wire
from roadlib.case import IDENTITY, IS_SANITIZED, LOAD, RoadTest
from roadlib.client import ask
from roadlib.processes import PATIENCE, poll

QUERIES = int(100_000 * LOAD)
# What may differ between two equal loads: pages of the allocator, not what a leak of even 64 bytes a query
# would leave behind.
MEMORY_MARGIN_KIB = 4096
DESCRIPTOR_MARGIN = 8


@unittest.skipIf(QUERIES < 1000, "no load in this build")
class LoadTest(RoadTest):
    def dnsperf(self, proxy):
        """Asks for them over 200 sockets, each of which gets an answer."""
        names = "".join(f"h{number}.example {('A', 'AAAA', 'HTTPS')[number % 3]}\n" for number in range(1000))
        load = self.load(proxy, names, "-c", "200", "-n", str(QUERIES // 1000), "-t", str(PATIENCE))
        self.assertEqual(load.wait(30 * PATIENCE), 0)
        said = "\n".join(load.output())
        self.assertNotIn("Warning", said)  # an answer that its socket did not ask for, say
        for what in ("sent", "completed"):
            self.assertRegex(said, rf"Queries {what}: +{QUERIES}\b")
        self.assertIn(f"NOERROR {QUERIES} ", said)

    def test_dnsperf(self):
        demo_filter = self.demo_filter(quiet=True)
        proxy = self.proxy({"filteringDNS": demo_filter.address, **IDENTITY}, stderr=subprocess.DEVNULL)
        idle = proxy.descriptors()
        resident = []
        for _ in range(2):  # the first warms up, and counts as well
            self.dnsperf(proxy)
            poll(lambda: proxy.descriptors() <= idle + DESCRIPTOR_MARGIN, "the flows are closed")
            resident.append(proxy.resident_kib())
        if not IS_SANITIZED:  # a sanitizer keeps what was freed
            self.assertLess(resident[1], resident[0] + MEMORY_MARGIN_KIB)
        demo_filter.stop()
        total = 2 * QUERIES
        self.assertEqual(demo_filter.output()[-1], f"queries {total}, answered {total}, refused 0")

    def test_brief_log(self):
        path = os.path.join(self.folder, "log")
        with open(path, "wb") as log:
            proxy = self.proxy({"filteringDNS": self.demo_filter(quiet=True).address}, stderr=log,
                               arguments=("--log", "brief", "--source-app", "app"))
        for name in ("first.example", "second.example"):  # each has the policy be fetched
            ask(proxy.endpoint, wire.query(name))
        with open(path, encoding="utf-8") as log:
            poll(lambda: any("query second.example" in line for line in log), "both are told of")
            self.dnsperf(proxy)
            proxy.stop()
            form = r"query h\d+\.example (A|AAAA|HTTPS) app=app rule=5 server=\S+ rcode=NOERROR ms=\d+\.\d\n"
            others, lines = re.subn(form, "", "".join(line.split("] ", 1)[1] for line in log))
        self.assertEqual(lines, QUERIES)
        self.assertRegex(others, r"\AstopProxy.*\n(\*?Xpc Udp.*\n)*\Z")
