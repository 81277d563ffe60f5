"""The command lines of both programs: what they refuse, how they say it, and with which status they end."""

import os
import socket
import subprocess
import tempfile
import unittest

from roadlib import wire
from roadlib.case import RoadTest, main
from roadlib.client import ask
from roadlib.processes import PATIENCE, address_text, family_of, free_port

PROXY = os.environ["QUILLET_PROXY"]
DEMO_FILTER = os.environ["QUILLET_DEMO_FILTER"]


def run(*command, **environment):
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=PATIENCE,
                          check=False, env={**os.environ, **environment})


class BothProgramsTest(unittest.TestCase):
    PROGRAMS = (PROXY, DEMO_FILTER)

    def test_help(self):
        for program in self.PROGRAMS:
            done = run(program, "--help")
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertIn("--listen", done.stdout)

    def test_version(self):
        for program in self.PROGRAMS:
            done = run(program, "--version")
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertRegex(done.stdout, r"\d+\.\d+\.\d+")

    def test_bad_option(self):
        rows = (("--nonsense",), ("stray",), ("--listen",), ("--listen", ""), ("--listen", "127.0.0.1"),
                ("--listen", "127.0.0.1:65536"), ("--listen", "::1:53"), ("--listen", "localhost:5300"),
                ("--listen", "[127.0.0.1]:53"), ("--listen", "127.0.0.1:-1"), ("-x",))
        for program in self.PROGRAMS:
            for row in rows:
                with self.subTest(program=program, row=row):
                    done = run(program, *row)
                    self.assertEqual(done.returncode, 2, done)
                    self.assertTrue(done.stderr.strip())
                    self.assertEqual(done.stdout, "")

    def test_port_in_use(self):
        for program in self.PROGRAMS:
            for host in ("127.0.0.1", "::1"):
                with self.subTest(program=program, host=host), \
                        socket.socket(family_of(host), socket.SOCK_DGRAM) as taken:
                    taken.bind((host, 0))
                    address = address_text(host, taken.getsockname()[1])
                    self.assert_one_line(run(program, "--listen", address), address)

    def test_address_of_another_machine(self):
        for program in self.PROGRAMS:
            self.assert_one_line(run(program, "--listen", "192.0.2.1:5300"), "192.0.2.1:5300")

    def assert_one_line(self, done, thing):
        """Status 1 and one line that names the thing."""
        self.assertEqual(done.returncode, 1, done)
        lines = [line for line in done.stderr.splitlines() if thing in line]
        self.assertEqual(len(lines), 1, done.stderr)


class ProxyOptionsTest(RoadTest):
    def run_proxy(self, *arguments):
        return run(PROXY, "--listen", f"127.0.0.1:{free_port()}", "--defaults-dir", self.folder, *arguments)

    def assert_one_line(self, done, thing):
        BothProgramsTest.assert_one_line(self, done, thing)

    def test_vendor_data_that_cannot_be_read(self):
        missing = os.path.join(self.folder, "missing.json")
        self.assert_one_line(self.run_proxy("--vendor-data", missing), missing)
        self.assert_one_line(self.run_proxy("--vendor-data", self.folder), self.folder)

    def test_vendor_data_that_is_no_object(self):
        for text in ("", "{", "[]", "7", "null", '"text"', '{"a": "b",}', '{"a": "b"} x', "[" * 100_000,
                     '{"a": "\udcff"}'):
            with self.subTest(text=text[:40]):
                path = self.vendor_file(text)
                self.assert_one_line(self.run_proxy("--vendor-data", path), path)

    def test_options_that_lack_their_value(self):
        for option in ("--vendor-data", "--defaults-dir", "--source-app"):
            self.assertEqual(run(PROXY, option).returncode, 2)

    def test_many_listen_addresses(self):
        upstream, proxy = self.road(hosts=("127.0.0.1", "127.0.0.1", "127.0.0.2", "::1"))
        for number, endpoint in enumerate(proxy.endpoints):
            query = wire.query("example.com")
            self.assertEqual(ask(endpoint, query), wire.answer_to(query))
            self.assertEqual(len(upstream.queries), number + 1)


class DefaultsTest(RoadTest):
    """The user defaults: where they lie, what is kept there, what is read from there."""

    SUITE = "group.com.quillet.filteringosx.json"

    def test_vendor_data_is_kept(self):
        _, proxy = self.road()
        proxy.wait_for_line("initVendorSettings  - done")
        with open(os.path.join(proxy.defaults_folder, self.SUITE), encoding="utf-8") as file:
            self.assertIn('"org42"', file.read())

    def test_place_of_the_file(self):
        for variable, below in (("STATE_DIRECTORY", ""), ("XDG_STATE_HOME", "quillet"),
                                ("HOME", ".local/state/quillet")):
            with self.subTest(variable=variable), tempfile.TemporaryDirectory() as place:
                environment = {"XDG_STATE_HOME": "", variable: place}
                proxy = self.proxy({"organizationId": "org42"}, defaults_folder=None, environment=environment)
                proxy.wait_for_line("initVendorSettings  - done")
                proxy.stop()
                self.assertTrue(os.path.exists(os.path.join(place, below, self.SUITE)))

    def test_values_of_the_file_are_sent(self):
        upstream, proxy = self.road()
        ask(proxy.endpoint, wire.query("example.com"))
        path = os.path.join(proxy.defaults_folder, self.SUITE)
        with open(path, "w", encoding="utf-8") as file:
            file.write('{"ip": "192.0.2.7", "send_timezone": 1}')
        ask(proxy.endpoint, wire.query("example.com"))
        options = dict(wire.injected_options(upstream.wait_for_queries(2)[1]))
        self.assertEqual(options[65004], b"192.0.2.7")
        self.assertNotIn(65006, options)

    def test_bad_files(self):
        for content in (b"", b"{", b"[]", b"\xff\xfe", b"[" * 100_000, b'{"ip": 7, "send_ip": "no"}',
                        b'{"send_timezone": 1e999}', b'{"send_timezone": "1"}'):
            with self.subTest(content=content[:20]):
                upstream, proxy = self.road()
                ask(proxy.endpoint, wire.query("example.com"))
                with open(os.path.join(proxy.defaults_folder, self.SUITE), "wb") as file:
                    file.write(content)
                query = wire.query("example.com")
                self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
                options = dict(wire.injected_options(upstream.wait_for_queries(2)[1]))
                self.assertEqual(options[65004], b"127.0.0.1")

    def test_folder_that_cannot_be_written(self):
        blocked = os.path.join(self.folder, "blocked")
        with open(blocked, "w", encoding="ascii"):
            pass
        upstream, proxy = self.road(defaults_folder=os.path.join(blocked, "deep"))
        query = wire.query("example.com")
        self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
        self.assertEqual(dict(wire.injected_options(upstream.queries[0]))[65001], b"org42")


if __name__ == "__main__":
    main()
