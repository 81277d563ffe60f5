"""Whoever reads the log: the journal gets each record as an entry, and a reader that reads nothing stops nobody.

Runs in a mount namespace of its own, where the test itself is the journal; skipped where the system permits no
such thing."""

import os
import select
import signal
import socket

from roadlib import namespace, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import ask, tool

SOCKET = "/run/systemd/journal/socket"


class LogReaderTest(RoadTest):
    def assert_serves(self, proxy):
        for number in range(200):
            query = wire.query(f"host{number}.example")
            self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))

    def assert_serves_and_ends(self, proxy):
        self.assert_serves(proxy)
        self.assertEqual(proxy.stop(), 0)


class PipeTest(LogReaderTest):
    def setUp(self):
        super().setUp()
        self.reader, self.writer = os.pipe()
        self.addCleanup(os.close, self.reader)
        self.addCleanup(os.close, self.writer)

    def road_with_pipe(self):
        return self.road(discard=True, preparation=lambda: os.dup2(self.writer, 2))

    def test_one_that_nobody_reads(self):
        _, proxy = self.road_with_pipe()
        self.assert_serves_and_ends(proxy)

    def test_one_that_reads_late_gets_all_of_it_also_when_the_pipe_does_not_block(self):
        os.set_blocking(self.writer, False)
        _, proxy = self.road_with_pipe()
        self.assert_serves(proxy)
        text = b""
        while text.count(b"[DNS REQ FLOW]") < 200 and select.select([self.reader], [], [], 20)[0]:
            text += os.read(self.reader, 1 << 16)
        self.assertEqual(text.count(b"[DNS REQ FLOW]"), 200)
        self.assertNotIn(b"records were lost", text)


class JournalTest(LogReaderTest):
    def setUp(self):
        super().setUp()
        tool("mount", "-t", "tmpfs", "tmpfs", "/run")
        self.addCleanup(tool, "umount", "/run")
        os.makedirs(os.path.dirname(SOCKET))
        self.journal = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(self.journal.close)
        self.journal.bind(SOCKET)
        self.journal.settimeout(20)

    def road_with_journal(self):
        null = os.stat("/dev/null")  # where the proxy's standard error goes
        stream = {"JOURNAL_STREAM": f"{null.st_dev}:{null.st_ino}"}
        return self.road(discard=True, environment=stream)

    def test_records_are_entries_of_the_program(self):
        _, proxy = self.road_with_journal()
        fields = self.journal.recv(1 << 20).decode().splitlines()
        self.assertRegex(fields[0], "^MESSAGE=.")
        self.assertEqual(fields[1:], ["PRIORITY=6", "SYSLOG_IDENTIFIER=quillet-dns-proxy"])
        proxy.send_signal(signal.SIGTERM)
        while not self.journal.recv(1 << 20).startswith(b"MESSAGE=stopProxy"):
            pass

    def test_one_that_reads_nothing(self):
        _, proxy = self.road_with_journal()
        self.assert_serves_and_ends(proxy)


if __name__ == "__main__":
    namespace.enter()
    main()
