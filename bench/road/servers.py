"""The servers under measurement, one process each; every one asks the demo filter."""

import contextlib
import json
import os
import re
import signal
import socket
import subprocess
import sys
import time
from pathlib import Path

SETTINGS = {"organizationId": "org42", "orgUnitId": "sales", "userId": "ana", "serialNumber": "C02XL0GYJGH5",
            "ttl": "60", "addAppSenderId": "yes"}
# What the proxy writes into each query with these settings, for a server that is to do the same work.
EDNS_OPTIONS = {65001: "org42", 65002: "sales", 65003: "ana", 65004: "C02XL0GYJGH5", 65005: "com.example.browser",
                65006: "60", 65007: "quillet", 65008: "desktop", 65009: "0.1.0"}
RELAY_PORTS = (9898, 9899)
TICKS_PER_SECOND = os.sysconf("SC_CLK_TCK")
QUERY = bytes.fromhex("1234 0100 0001 0000 0000 0000 01 61 00 0001 0001")


def free_port():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


class Server:
    """A process; `wrapper` is a command that runs it, such as strace, and whose child it then is."""

    def __init__(self, command, port, log=None, environment=None, wrapper=()):
        self.port = port
        self.log = log
        with open(log or os.devnull, "wb") as output:
            self.child = subprocess.Popen([*map(str, wrapper), *map(str, command)], stdin=subprocess.DEVNULL,
                                          stdout=output, stderr=output, env={**os.environ, **(environment or {})})
        self.is_wrapped = bool(wrapper)

    @property
    def pid(self):
        if not self.is_wrapped:
            return self.child.pid
        children = Path(f"/proc/{self.child.pid}/task/{self.child.pid}/children").read_text().split()
        return int(children[0])

    def wait_until_it_answers(self):
        """Sends a query again and again, for ten seconds at most, until it is answered."""
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as s:
            s.settimeout(0.1)
            s.connect(("127.0.0.1", self.port))
            for _ in range(100):
                if self.child.poll() is not None:
                    sys.exit(f"road: {self.child.args[0]} ended with status {self.child.returncode}")
                try:
                    s.send(QUERY)
                    s.recv(512)
                    return self
                except TimeoutError:
                    pass
                except ConnectionRefusedError:
                    time.sleep(0.1)
        sys.exit(f"road: {self.child.args[0]} does not answer")

    def wait_until_it_listens(self):
        """For one that is not to answer: its log says so."""
        for _ in range(100):
            if b"listening on" in Path(self.log).read_bytes():
                return
            time.sleep(0.1)
        sys.exit(f"road: {self.child.args[0]} does not listen")

    def cpu_seconds(self):
        fields = Path(f"/proc/{self.child.pid}/stat").read_text().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / TICKS_PER_SECOND

    def peak_kib(self):
        status = Path(f"/proc/{self.child.pid}/status").read_text()
        return int(re.search(r"VmHWM:\s+(\d+)", status)[1])

    def log_octets(self):
        return Path(self.log).stat().st_size if self.log else 0

    def stop(self):
        if self.child.poll() is None:
            os.kill(self.pid, signal.SIGTERM)
            try:
                self.child.wait(10)
            except subprocess.TimeoutExpired:
                self.child.kill()
                self.child.wait()


def demo_filter(build):
    port = free_port()
    return Server([build / "quillet-demo-filter", "--quiet", "--listen", f"127.0.0.1:{port}"], port)


@contextlib.contextmanager
def relay(build, folder):
    """The relay at its two ports, its log in a file; it flushes no cache."""
    with open(folder / "relay-log", "wb") as log:
        child = subprocess.Popen([str(build / "quillet-relay"), "--flush-command="], stdin=subprocess.DEVNULL,
                                 stdout=subprocess.DEVNULL, stderr=log,
                                 env={**os.environ, "XDG_RUNTIME_DIR": str(folder)})
    try:
        wait_until_bound(RELAY_PORTS)
        yield
    finally:
        child.terminate()
        child.wait()


def wait_until_bound(ports):
    for _ in range(100):
        bound = Path("/proc/net/udp").read_text() + Path("/proc/net/udp6").read_text()
        if all(f":{port:04X} " in bound for port in ports):
            return
        time.sleep(0.1)
    sys.exit("road: the relay does not listen")


def proxy(build, upstream, folder, options=(), logs=True, wrapper=(), environment=None):
    port = free_port()
    folder.mkdir(parents=True, exist_ok=True)
    folder.chmod(0o700)
    settings = folder / "vendor-data.json"
    settings.write_text(json.dumps({"filteringDNS": f"127.0.0.1:{upstream}", **SETTINGS}))
    command = [build / "quillet-dns-proxy", "--listen", f"127.0.0.1:{port}", "--vendor-data", settings,
               "--defaults-dir", folder, "--source-app", "com.example.browser", *options]
    return Server(command, port, folder / "log" if logs else None,
                  {"XDG_RUNTIME_DIR": str(folder), **(environment or {})}, wrapper)


def dnsmasq(upstream, folder):
    """Without a cache, every query logged to a file."""
    port = free_port()
    folder.mkdir(parents=True, exist_ok=True)
    log = folder / "log"
    server = Server(["dnsmasq", "--keep-in-foreground", "--conf-file=/dev/null", "--no-resolv", "--no-hosts",
                     "--cache-size=0", "--log-queries", f"--log-facility={log}", "--pid-file=", "--bind-interfaces",
                     "--listen-address=127.0.0.1", f"--port={port}", f"--server=127.0.0.1#{upstream}",
                     "--dns-forward-max=10000", "--user=root"], port)
    server.log = log
    return server


def dnsdist(upstream, folder):
    """Sets the same number of EDNS options; no cache, no log, and it asks nobody else."""
    port = free_port()
    folder.mkdir(parents=True, exist_ok=True)
    lines = ['setSecurityPollSuffix("")', f'setLocal("127.0.0.1:{port}")', 'setACL("127.0.0.0/8")',
             "setMaxUDPOutstanding(65535)", f'newServer({{address="127.0.0.1:{upstream}"}})', "getServer(0):setUp()"]
    lines += [f'addAction(AllRule(), SetEDNSOptionAction({code}, "{value}"))' for code, value in EDNS_OPTIONS.items()]
    (folder / "dnsdist.conf").write_text("\n".join(lines) + "\n")
    return Server(["dnsdist", "--supervised", "--disable-syslog", "-C", folder / "dnsdist.conf"], port)
