"""The programs' command lines: what they refuse and with which status; where the user defaults lie."""

import os
import tempfile

from roadlib import wire
from roadlib.case import READ, RoadTest
from roadlib.processes import Process, run

PROXY, DEMO_FILTER, RELAY = (os.environ[f"QUILLET_{name}"] for name in ("PROXY", "DEMO_FILTER", "RELAY"))
SUITE = "group.com.quillet.filteringosx.json"


class OptionsTest(RoadTest):
    def assert_one_line(self, thing, program, *options):
        """Status 1 and one line that names the thing."""
        done = run(program, *options)
        self.assertEqual((done.returncode, [thing in line for line in done.stderr.splitlines()]), (1, [True]), done)

    def test_help_version_and_what_is_none(self):
        for program in (PROXY, DEMO_FILTER, RELAY):
            for option, shown in (("--help", r"quillet-\w+"), ("--version", r"^quillet-[a-z-]+ \d+\.\d+\.\d+\n$")):
                done = run(program, option)
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                self.assertRegex(done.stdout, shown)
            for row in (("--nonsense",), ("stray",), ("--identify", "all"), ("--listen",), ("--listen", "localhost:5300"),
                        ("--shell", "")):
                done = run(program, *row)
                self.assertEqual((done.returncode, done.stdout, bool(done.stderr.strip())), (2, "", True), done)

    def test_address_that_cannot_be_had(self):
        for program in (PROXY, DEMO_FILTER):
            for address in (self.upstream().address, "192.0.2.1:5300"):
                self.assert_one_line(address, program, "--listen", address)

    def test_ports_of_the_systems_choice_are_told(self):
        proxy = self.started(Process([PROXY, "--listen", "127.0.0.1:0", "--listen", "127.0.0.2:0", "--defaults-dir",
                                      self.folder, "--control", "none"]))
        told = [line.split("listening on ")[1] for line in proxy.wait_for_line("FlowHost: listening on ", 2)]
        hosts, ports = zip(*(text.split(":") for text in told))
        self.assertEqual(hosts, ("127.0.0.1", "127.0.0.2"))
        self.assertLessEqual({int(port) for port in ports}, proxy.bound_ports())

    def test_vendor_data_that_cannot_be_used(self):
        files = [self.vendor_file(text, f"{number}.json") for number, text in enumerate(("[]", '{"a": "b"} x'))]
        for path in (os.path.join(self.folder, "missing.json"), self.folder, *files):
            self.assert_one_line(path, PROXY, "--listen", "127.0.0.1:0", "--defaults-dir", self.folder,
                                 "--vendor-data", path)

    def test_check_tells_what_is_wrong_and_leaves_no_trace(self):
        port = int(self.upstream().address.rsplit(":")[1])  # taken
        fine = {"filteringDNS": f"127.0.0.2:{port}", "secondDNS": f"192.0.2.1:{port}"}
        own = '"127.0.0.2:%d" is the proxy\'s own address' % port
        for settings, defaults, host, lines in (
                (fine, None, "127.0.0.1", []), (fine, None, "[::]", []), (fine, '{"ip": "192.0.2.1"}', "127.0.0.1", []),
                (fine, "[]", "0.0.0.0", [("v", f"filteringDNS: {own}"), ("d", "not a JSON object")]),
                ("{", '{"ip": 4}', "127.0.0.1", [("v", "not valid JSON"), ("d", "ip: not text but of type number")]),
                (None, None, "127.0.0.1", [("v", "No such file or directory")]),
                ({"a\n\x1b": "x"}, None, "127.0.0.1", [("v", "a\\n\\x1B: unknown key")])):
            with self.subTest(settings=settings, defaults=defaults, host=host):
                folder = tempfile.mkdtemp(dir=self.folder)
                v, d = os.path.join(folder, "v.json"), os.path.join(folder, "state", SUITE)
                if settings is not None:
                    self.vendor_file(settings, v)
                if defaults is not None:
                    os.mkdir(os.path.dirname(d))
                    self.vendor_file(defaults, d)
                before = [*os.walk(folder)]
                done = run(PROXY, "--check", "--listen", f"{host}:{port}", "--vendor-data", v, "--defaults-dir",
                           os.path.dirname(d))
                self.assertEqual(done.stdout.splitlines(), [f"{v if file == 'v' else d}: {what}" for file, what in lines])
                self.assertEqual((done.returncode, done.stderr, [*os.walk(folder)]), (1 if lines else 0, "", before))


class DefaultsTest(RoadTest):
    def test_place_of_the_file(self):
        for variable, below in (("STATE_DIRECTORY", ""), ("XDG_STATE_HOME", "quillet"),
                                ("HOME", ".local/state/quillet")):
            with self.subTest(variable=variable):
                place = os.path.join(self.folder, variable)
                proxy = self.proxy({"organizationId": "org42"}, defaults_folder=None,
                                   environment={"XDG_STATE_HOME": "", variable: place})
                proxy.wait_for_line(READ)
                with open(os.path.join(place, below, SUITE), encoding="utf-8") as file:
                    self.assertIn('"org42"', file.read())

    def test_folder_that_cannot_be_written(self):
        upstream, proxy = self.road(defaults_folder=os.path.join(self.vendor_file("", "blocked"), "deep"))
        self.query(proxy)
        self.assertEqual(dict(wire.injected_options(upstream.queries[0]))[65001], b"org42")
