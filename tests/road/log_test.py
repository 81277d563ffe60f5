"""The proxy's log and whoever reads it: one line a record whatever a query holds; the journal gets each record as an
entry; a reader that reads nothing stops nobody.

Runs in a mount namespace of its own, where the test itself is the journal; skipped where the system permits no
such thing."""

import os
import re
import select
import signal
import socket

from roadlib import namespace
from roadlib.case import RoadTest, main
from roadlib.client import tool

JOURNAL = "/run/systemd/journal/socket"
# What the proxy prints to standard output at each state of its link to the relay service; no log record.
STATE_LINE = "Xpc Udp This is stateUpdateHandler:"


class LinesTest(RoadTest):
    def records_of(self, *name):
        """The log texts of one query, each line's form checked, without those of the link to the relay service."""
        _, proxy = self.road(settings={"organizationId": ""})  # no policy fetch, whose end may come at any time
        self.query(proxy, name)
        proxy.wait_for_line("State: Cancelled")
        proxy.stop()
        texts = []
        for line in proxy.output():
            form = rf"\d{{4}}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{{3}} quillet-dns-proxy\[{proxy.pid}\] ([^\0-\x1f\x7f-\x9f]*)"
            found = re.fullmatch(form, line)
            self.assertTrue(found or line == STATE_LINE, line)
            texts += [found[1]] if found and "Xpc Udp " not in found[1] else []
        start = next(i for i, text in enumerate(texts) if "handleNewUDPFlow, instance id" in text)
        return texts[start:]

    def test_what_a_query_holds_makes_no_record_of_its_own(self):
        plain = self.records_of("plain", "example")
        texts = self.records_of(b"\n2026-01-01 x[1] stopProxy", b"\r\0\x1b[31m\x7f%s%n", "example")
        self.assertEqual(len(texts), len(plain))
        self.assertIn(r"question domain is: \n2026-01-01 x[1] stopProxy.\x0D\x00\x1B[31m\x7F%s%n.example.", texts)
        self.assertIn(r"question domain is: \xC2\x85.\xC2\x9B[31m.ž.",
                      self.records_of(b"\xc2\x85", b"\xc2\x9b[31m", "ž"))


class ReaderTest(RoadTest):
    def assert_serves(self, proxy):
        for number in range(200):
            self.query(proxy, f"host{number}.example")

    def road_with_pipe(self, blocks=True):
        reader, writer = os.pipe()
        os.set_blocking(writer, blocks)
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)
        return reader, self.road(discard=True, preparation=lambda: os.dup2(writer, 2))[1]

    def test_a_pipe_that_nobody_reads(self):
        self.assert_serves(self.road_with_pipe()[1])

    def test_a_pipe_that_is_read_late_holds_all_of_it_also_when_it_does_not_block(self):
        reader, proxy = self.road_with_pipe(blocks=False)
        self.assert_serves(proxy)
        text = b""
        while text.count(b"[DNS REQ FLOW]") < 200 and select.select([reader], [], [], 20)[0]:
            text += os.read(reader, 1 << 16)
        self.assertEqual((text.count(b"[DNS REQ FLOW]"), b"records were lost" in text), (200, False))

    def road_with_journal(self):
        tool("mount", "-t", "tmpfs", "tmpfs", "/run")
        self.addCleanup(tool, "umount", "/run")
        os.makedirs(os.path.dirname(JOURNAL))
        journal = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(journal.close)
        journal.bind(JOURNAL)
        journal.settimeout(20)
        null = os.stat("/dev/null")  # where the proxy's standard error goes
        return journal, self.road(discard=True, environment={"JOURNAL_STREAM": f"{null.st_dev}:{null.st_ino}"})[1]

    def test_records_are_entries_of_the_program_in_the_journal(self):
        journal, proxy = self.road_with_journal()
        fields = journal.recv(1 << 20).decode().splitlines()
        self.assertRegex(fields[0], "^MESSAGE=.")
        self.assertEqual(fields[1:], ["PRIORITY=6", "SYSLOG_IDENTIFIER=quillet-dns-proxy"])
        proxy.send_signal(signal.SIGTERM)
        while not journal.recv(1 << 20).startswith(b"MESSAGE=stopProxy"):
            pass

    def test_a_journal_that_reads_nothing(self):
        self.assert_serves(self.road_with_journal()[1])


if __name__ == "__main__":
    namespace.enter()
    main()
