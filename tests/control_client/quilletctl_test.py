"""The program as its user sees it: what it prints of what a proxy answers, and how it ends when that answers badly or not.

The proxy is one of the test's own, on a socket in a folder of its own."""

import json
import os
import pty
import re
import signal
import socket
import subprocess
import sys
import tempfile
import termios
import threading
import unittest
from pathlib import Path

PROGRAM = sys.argv.pop()
PATIENCE = 30  # seconds until a test fails rather than hangs
SCREENS = Path(__file__).parent / "screens"  # for a command what a proxy answers, and what is shown of it
STATUS, EXPLAINED = (json.loads((SCREENS / f"{name}.json").read_text()) for name in ("status", "explain"))
STATUS_TEXT, EXPLAINED_TEXT = ((SCREENS / f"{name}.txt").read_text() for name in ("status", "explain"))
QUERY = {"name": "a b\x1b]0;x\x07.example", "type": "A", "app": "x y", "rule": 5, "server": "127.0.0.2:81", "rcode": None,
         "ms": 1234.5}
QUERY_LINE = r"  1234 none     5 127.0.0.2:81     A      a\x20b\x1B]0;x\x07.example         x y"


def message(**members):
    return json.dumps({"jsonrpc": "2.0", **members}).encode() + b"\n"


class Proxy:
    """Serves one client: for each request the next of `answers`, a result, or lines as they are to be sent."""

    def __init__(self, path, *answers, greeting=b"", stays=False):
        self.requests, self.answers, self.greeting = [], answers, greeting
        self.stays, self.ending = stays, threading.Event()
        self.listener = socket.create_server(path, family=socket.AF_UNIX)
        self.listener.settimeout(PATIENCE)
        self.thread = threading.Thread(target=self.serve)
        self.thread.start()

    def serve(self):
        client, _ = self.listener.accept()
        with client, client.makefile("rb") as lines:
            client.sendall(self.greeting)
            for answer in self.answers:
                self.requests.append(json.loads(lines.readline()))
                client.sendall(answer if isinstance(answer, bytes)
                               else message(id=self.requests[-1]["id"], result=answer))
            if self.stays:
                self.ending.wait(PATIENCE)

    def end(self):
        self.ending.set()
        self.thread.join()
        self.listener.close()


class Test(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory())
        self.proxies = 0

    def proxy(self, *answers, path=None, **how):
        """One more, whose socket is `self.path` from then on."""
        self.proxies += 1
        self.path = path or os.path.join(self.folder, f"{self.proxies}.sock")
        proxy = Proxy(self.path, *answers, **how)
        self.addCleanup(proxy.end)
        return proxy

    def run_program(self, *arguments, stdout=subprocess.PIPE, environment=None, **how):
        return subprocess.run([PROGRAM, *arguments], stdin=subprocess.DEVNULL, stdout=stdout, stderr=subprocess.PIPE, text=True,
                              timeout=PATIENCE, env={"LC_ALL": "C.UTF-8", **(environment or {})}, **how)

    def assert_failure(self, done, status, text=""):
        """That status, and one line of an error that holds the text."""
        self.assertEqual((done.returncode, done.stdout, done.stderr.count("\n")), (status, "", 1), done)
        self.assertIn(text, done.stderr)
        self.assertTrue(done.stderr[:-1].isprintable(), done)


class CommandsTest(Test):
    def test_each_command(self):
        report = "flow \x1b[2J\nnext\n" + "x" * 400_000 + "\n"
        rows = (
            (("status",), "status", {}, STATUS, STATUS_TEXT),
            (("explain", "example.com", "--app", "x"), "explain", {"name": "example.com", "app": "x"}, EXPLAINED, EXPLAINED_TEXT),
            (("explain", "example.com"), "explain", {"name": "example.com"}, 7, None),
            (("report",), "report", {}, report, report.replace("\x1b", r"\x1B")),
            (("report", "--seconds", "60", "--app", "x", "--detailed"), "report", {"seconds": 60, "app": "x", "detailed": True},
             "", ""),
            (("bypass", "on"), "bypass", {"on": True}, None, ""),
            (("bypass", "off"), "bypass", {"on": False}, None, ""),
            (("reload",), "reload", {}, None, ""),
            (("log", "brief"), "log", {"mode": "brief"}, None, ""),
            (("metrics",), "metrics", {}, "x_total 1\n# EOF\n", "x_total 1\n# EOF\n"),
            (("reload", "--json"), "reload", {}, None, "null\n"),
            (("--json", "status"), "status", {}, {"a": "\x9bé"}, '{"a":"\\u009b\\u00e9"}\n'),
        )
        for arguments, method, params, result, shown in rows:
            with self.subTest(arguments=arguments):
                proxy = self.proxy(result)
                done = self.run_program("--socket", self.path, *arguments)
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                self.assertEqual(proxy.requests, [{"jsonrpc": "2.0", "id": 1, "method": method, "params": params}])
                if shown is not None:
                    self.assertEqual(done.stdout, shown)

    def test_watch(self):
        for arguments, lines in (((), [QUERY_LINE, "3 queries not shown: there were more than could be read"]),
                                 (("--json",), [json.dumps(QUERY, separators=(",", ":"), sort_keys=True), '{"lost":3}'])):
            told = message(method="query", params=QUERY) + message(method="else") + message(method="lost", params={"lost": 3})
            self.proxy(message(id=1, result=None) + told)
            done = self.run_program("--socket", self.path, "watch", *arguments)
            self.assertEqual((done.returncode, done.stdout.splitlines(), done.stderr),
                             (7, lines, "quilletctl: quillet-dns-proxy has ended\n"))


class FailureTest(Test):
    def test_wrong_use(self):
        for row in ((), ("nothing",), ("status", "more"), ("explain",), ("explain", ""), ("explain", b"\xff"), ("bypass",),
                    ("bypass", "maybe"), ("log", "loud"), ("report", "--seconds", "-1"), ("report", "--seconds", "1e3"),
                    ("--socket",), ("--json", "top"), ("--nonsense", "status")):
            done = self.run_program(*row)
            self.assertEqual((done.returncode, done.stdout, bool(done.stderr)), (2, "", True), row)

    def test_first_place_at_which_something_answers(self):
        os.mkdir(os.path.join(self.folder, "quillet"))
        places = {"RUNTIME_DIRECTORY": self.folder + ":/nowhere", "XDG_RUNTIME_DIR": self.folder}
        service, users = (os.path.join(self.folder, below, "dns-proxy.sock") for below in ("", "quillet"))
        with socket.socket(socket.AF_UNIX) as dead:
            dead.bind(service)
        for path in (users, service):
            self.proxy(path, path=path)
            self.assertEqual(self.run_program("metrics", environment=places).stdout, path)
            os.unlink(service)

    def test_nobody_answers(self):
        left = os.path.join(self.folder, "left")
        with socket.socket(socket.AF_UNIX) as dead:
            dead.bind(left)
        for path in (left, left + "/below", self.folder + "/none"):
            self.assert_failure(self.run_program("--socket", path, "status"), 7, path)
        self.assert_failure(self.run_program("--socket", "/" + 200 * "x", "status"), 1, "File name too long")

    @unittest.skipIf(os.geteuid() != 0, "another user to be takes root")
    def test_kept_out_by_the_mode(self):
        os.chmod(self.folder, 0o711)
        self.proxy()
        os.chmod(self.path, 0o660)
        done = self.run_program("--socket", self.path, "status", user=65534, group=65534, extra_groups=[])
        self.assert_failure(done, 1, "Permission denied")
        with socket.socket(socket.AF_UNIX) as served:  # so that the proxy ends
            served.connect(self.path)

    def test_bad_answers(self):
        turned_away = message(id=None, error={"code": -32001, "message": "not allowed"})
        rows = (
            (b"", "has ended"),
            (b'{"jsonrpc": "2.0", "id": 1, "resu', "within a line"),
            (b"nonsense\n", "no JSON-RPC"),
            (b"[1]\n", "no JSON-RPC"),
            (b'{"id": 1, "result": "\xff"}\n', "no JSON-RPC"),
            (message(id=2, result=1) + message(method="query", params=QUERY), "has ended"),
            (message(id=1, error={"code": -32002, "message": "no\nuse \x1b[2J" + 500 * "x"}), r"no\x0Ause \x1B[2Jxxx"),
            (message(id=1, error={"code": "7"}), "no reason"),
            (17_000_000 * b"x" + b"\n", "too long"),
        )
        for answer, text in rows:
            with self.subTest(text=text):
                self.proxy(answer)
                self.assert_failure(self.run_program("--socket", self.path, "status"), 1, text)
        self.proxy(greeting=turned_away)
        self.assert_failure(self.run_program("--socket", self.path, "watch"), 1, "not allowed")

    def test_no_answer(self):
        self.proxy(message(method="query", params=QUERY), stays=True)
        self.assert_failure(self.run_program("--socket", self.path, "status"), 1, "no answer")

    def test_full_disk(self):
        self.proxy(STATUS)
        with open("/dev/full", "w") as full:
            done = self.run_program("--socket", self.path, "status", stdout=full)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (1, 1), done)


class TerminalTest(Test):
    """On a terminal of 60 columns."""

    LEFT = b"\x1b[?1049l"  # xterm's other screen

    def start(self, *arguments, **environment):
        self.terminal, self.theirs = pty.openpty()
        for end in (self.terminal, self.theirs):
            self.addCleanup(os.close, end)
        termios.tcsetwinsize(self.theirs, (20, 60))
        self.mode = termios.tcgetattr(self.theirs)
        process = self.enterContext(subprocess.Popen(
            [PROGRAM, "--socket", self.path, *arguments], stdin=self.theirs, stdout=self.theirs, stderr=subprocess.PIPE,
            env={"LC_ALL": "C.UTF-8", "TERM": "xterm-256color", **environment}))
        self.addCleanup(process.kill)
        return process

    def read_until(self, text):
        shown = b""
        while text not in shown:
            shown += os.read(self.terminal, 65536)
        return shown

    def test_colour_and_width_of_watch(self):
        for environment, is_coloured in (({}, True), ({"NO_COLOR": "1"}, False)):
            proxy = self.proxy(message(id=1, result=None) + message(method="query", params=QUERY), stays=True)
            process = self.start("watch", **environment)
            shown = self.read_until(b"x y")
            self.assertEqual(b"\x1b[31mnone" in shown, is_coloured, shown)
            lines = re.sub(r"\x1b\[\d+m", "" if is_coloured else "no", shown.decode()).splitlines()
            self.assertEqual(max(map(len, lines)), 60, shown)
            proxy.ending.set()
            self.assertEqual(process.wait(PATIENCE), 7)

    def test_top_leaves_the_terminal_as_it_was(self):
        rows = ((lambda process, proxy: os.write(self.terminal, b"q"), 0, b""),
                (lambda process, proxy: process.send_signal(signal.SIGINT), 0, b""),
                (lambda process, proxy: process.send_signal(signal.SIGTERM), 0, b""),
                (lambda process, proxy: proxy.ending.set(), 7, b"quilletctl: quillet-dns-proxy has ended\n"))
        for end, status, said in rows:
            proxy = self.proxy(STATUS, message(id=1, result=None) + message(method="query", params=QUERY), stays=True)
            process = self.start("top")
            self.read_until(b"quits")
            termios.tcsetwinsize(self.theirs, (5, 20))
            process.send_signal(signal.SIGWINCH)
            self.assertIn(b"\x1b[J", self.read_until(b"q quits"))
            end(process, proxy)
            self.assertIn(self.LEFT, self.read_until(self.LEFT))
            self.assertEqual((process.wait(PATIENCE), process.stderr.read()), (status, said))
            self.assertEqual(termios.tcgetattr(self.theirs), self.mode)

    def test_top_without_a_terminal_that_it_knows(self):
        self.proxy(STATUS, None)
        self.assert_failure(self.run_program("--socket", self.path, "top"), 1, "terminal")
        self.proxy(STATUS, None)
        # newterm(3) keeps what it has taken when it fails.
        process = self.start("top", TERM="no-such-terminal", ASAN_OPTIONS="detect_leaks=0")
        self.assertEqual((process.wait(PATIENCE), process.stderr.read()), (1, b"quilletctl: top takes a terminal that $TERM names\n"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
