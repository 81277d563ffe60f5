"""The proxy's log and whoever reads it: one line a record whatever a query holds; the journal gets each record as an
entry; a reader that reads nothing stops nobody."""

import os
import re
import select
import signal
import socket
import subprocess

from roadlib import namespace
from roadlib.case import RoadTest
from roadlib.processes import tool

JOURNAL = "/run/systemd/journal/socket"
# What the proxy prints to standard output at each state of its link to the relay service; no log record.
STATE_LINE = "Xpc Udp This is stateUpdateHandler:"


class LinesTest(RoadTest):
    def test_what_a_query_holds_makes_no_record_of_its_own(self):
        _, proxy = self.road()
        form = rf"\d{{4}}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{{3}} quillet-dns-proxy\[{proxy.pid}\] ([^\0-\x1f\x7f-\x9f]*)"
        self.query(proxy, (b"\n2026-01-01 x[1] stopProxy", b"\r\0\x1b[31m\x7f%s%n", b"\xc2\x85\xc2\x9b[31m", "ž"))
        proxy.wait_for_line(r"question domain is: \n2026-01-01 x[1] stopProxy.\x0D\x00\x1B[31m\x7F%s%n.\xC2\x85\xC2\x9B[31m.ž.")
        proxy.stop()
        for line in proxy.output():
            self.assertTrue(re.fullmatch(form, line) or line == STATE_LINE, line)


class ReaderTest(RoadTest):
    def assert_serves(self, proxy, queries=200):
        for number in range(queries):
            self.query(proxy, f"host{number}.example")

    def test_a_pipe_that_is_read_late_holds_all_of_it(self):
        for blocks in (True, False):
            reader, writer = os.pipe()
            os.set_blocking(writer, blocks)
            self.addCleanup(os.close, reader)
            self.addCleanup(os.close, writer)
            _, proxy = self.road(stderr=writer)
            self.assert_serves(proxy)
            text = b""
            while text.count(b"[DNS REQ FLOW]") < 200 and select.select([reader], [], [], 20)[0]:
                text += os.read(reader, 1 << 16)
            self.assertEqual((text.count(b"[DNS REQ FLOW]"), b"records were lost" in text), (200, False))

    def test_a_journal_that_is_read_late_gets_each_record_as_an_entry(self):
        tool("mount", "-t", "tmpfs", "tmpfs", "/run")
        self.addCleanup(tool, "umount", "/run")
        os.makedirs(os.path.dirname(JOURNAL))
        journal = self.enterContext(socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM))
        journal.bind(JOURNAL)
        journal.settimeout(20)
        null = os.stat("/dev/null")  # where the proxy's standard error goes
        _, proxy = self.road(stderr=subprocess.DEVNULL, environment={"JOURNAL_STREAM": f"{null.st_dev}:{null.st_ino}"})
        self.assert_serves(proxy, 20)  # whose records are more than its socket holds
        fields = journal.recv(1 << 20).decode().splitlines()
        self.assertRegex(fields[0], "^MESSAGE=.")
        self.assertEqual(fields[1:], ["PRIORITY=6", "SYSLOG_IDENTIFIER=quillet-dns-proxy"])
        proxy.send_signal(signal.SIGTERM)
        while not journal.recv(1 << 20).startswith(b"MESSAGE=stopProxy"):
            pass


setUpModule = namespace.enter
