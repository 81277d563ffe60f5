"""The programs' command lines: what they refuse, how they say it, and with which status they end. And the user
defaults: where they lie, what is kept there, what is read from there."""

import os
import socket
import subprocess
import tempfile

from roadlib import wire
from roadlib.case import RoadTest, main
from roadlib.client import ask
from roadlib.processes import PATIENCE, Process, free_port

PROXY, DEMO_FILTER, RELAY = (os.environ[f"QUILLET_{name}"] for name in ("PROXY", "DEMO_FILTER", "RELAY"))
SUITE = "group.com.quillet.filteringosx.json"


def run(*command):
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=PATIENCE,
                          check=False)


class OptionsTest(RoadTest):
    def assert_one_line(self, done, thing):
        """Status 1 and one line that names the thing."""
        self.assertEqual(done.returncode, 1, done)
        self.assertEqual([thing in line for line in done.stderr.splitlines()], [True], done.stderr)

    def test_help_version_and_what_is_none(self):
        for program in (PROXY, DEMO_FILTER, RELAY):
            for option, shown in (("--help", r"quillet-\w+"), ("--version", r"^quillet-[a-z-]+ \d+\.\d+\.\d+\n$")):
                done = run(program, option)
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                self.assertRegex(done.stdout, shown)
            for row in (("--nonsense",), ("stray",), ("--listen",), ("--listen", "localhost:5300"), ("-x",)):
                with self.subTest(program=program, row=row):
                    done = run(program, *row)
                    self.assertEqual((done.returncode, done.stdout), (2, ""))
                    self.assertTrue(done.stderr.strip())

    def test_address_that_cannot_be_had(self):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as taken:
            taken.bind(("127.0.0.1", 0))
            for program in (PROXY, DEMO_FILTER):
                for address in (f"127.0.0.1:{taken.getsockname()[1]}", "192.0.2.1:5300"):
                    self.assert_one_line(run(program, "--listen", address), address)

    def test_ports_of_the_systems_choice_are_told(self):
        proxy = Process([PROXY, "--listen", "127.0.0.1:0", "--listen", "127.0.0.2:0", "--defaults-dir", self.folder])
        self.addCleanup(self._end, proxy)
        told = [line.split("FlowHost: listening on ")[1] for line in proxy.wait_for_line("FlowHost: listening on ", 2)]
        hosts, ports = zip(*(text.split(":") for text in told))
        self.assertEqual(hosts, ("127.0.0.1", "127.0.0.2"))
        self.assertLessEqual({int(port) for port in ports}, proxy.bound_ports())

    def test_vendor_data_that_cannot_be_used(self):
        missing = os.path.join(self.folder, "missing.json")
        files = [self.vendor_file(text, f"{number}.json") for number, text in enumerate((
            "", "[]", "null", '{"a": "b",}', '{"a": "b"} x', "[" * 100_000, '{"a": "\udcff"}'))]
        for path in (missing, self.folder, *files):
            with self.subTest(path=path):
                self.assert_one_line(run(PROXY, "--listen", f"127.0.0.1:{free_port()}", "--defaults-dir", self.folder,
                                         "--vendor-data", path), path)


class DefaultsTest(RoadTest):
    def test_place_of_the_file(self):
        for variable, below in (("STATE_DIRECTORY", ""), ("XDG_STATE_HOME", "quillet"),
                                ("HOME", ".local/state/quillet")):
            with self.subTest(variable=variable), tempfile.TemporaryDirectory() as place:
                proxy = self.proxy({"organizationId": "org42"}, defaults_folder=None,
                                   environment={"XDG_STATE_HOME": "", variable: place})
                proxy.wait_for_line("initVendorSettings  - done")
                proxy.stop()
                with open(os.path.join(place, below, SUITE), encoding="utf-8") as file:
                    self.assertIn('"org42"', file.read())

    def test_values_of_the_file_are_sent(self):
        upstream, proxy = self.road()
        proxy.wait_for_line("initVendorSettings  - done")
        with open(os.path.join(proxy.defaults_folder, SUITE), "w", encoding="ascii") as file:
            file.write('{"ip": "192.0.2.7", "send_timezone": 1}')
        ask(proxy.endpoint, wire.query("example.com"))
        options = dict(wire.injected_options(upstream.wait_for_queries(1)[0]))
        self.assertEqual((options[65004], 65006 in options), (b"192.0.2.7", False))

    def test_folder_that_cannot_be_written(self):
        blocked = self.vendor_file("", "blocked")
        upstream, proxy = self.road(defaults_folder=os.path.join(blocked, "deep"))
        ask(proxy.endpoint, wire.query("example.com"))
        self.assertEqual(dict(wire.injected_options(upstream.queries[0]))[65001], b"org42")


if __name__ == "__main__":
    main()
