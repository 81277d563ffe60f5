"""The log of a service: records go to the journal, and a journal that reads nothing stops nobody.

Runs in a mount namespace of its own, where the test itself is the journal; skipped where the system permits no
such thing."""

import os
import signal
import socket

from roadlib import namespace, wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import ask, tool

SOCKET = "/run/systemd/journal/socket"


class JournalTest(RoadTest):
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

    def test_every_query_is_answered_and_the_end_comes_at_once_when_nobody_reads(self):
        _, proxy = self.road_with_journal()
        for number in range(200):
            query = wire.query(f"host{number}.example")
            self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
        self.assertEqual(proxy.stop(), 0)


if __name__ == "__main__":
    namespace.enter()
    main()
