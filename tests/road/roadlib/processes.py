"""The programs under test as child processes: started, watched, and ended whatever happens."""

import contextlib
import os
import random
import re
import signal
import socket
import subprocess
import threading
import time

# Seconds to wait for something that ought to happen at once; how slow a build is multiplies it.
SLOWNESS = float(os.environ.get("QUILLET_SLOWNESS", "1"))
PATIENCE = 20 * SLOWNESS


def poll(condition, what, seconds=PATIENCE):
    """Asks `condition` again and again, for a bounded time, until it gives something true."""
    deadline = time.monotonic() + seconds
    while not (result := condition()):
        assert time.monotonic() < deadline, f"not within {seconds:.0f} s: {what}"
        time.sleep(0.005)
    return result


def family_of(host):
    return socket.AF_INET6 if ":" in host else socket.AF_INET


def free_port(host="127.0.0.1"):
    """A port that nobody holds by UDP or TCP, from below those that the system gives to sockets without a wish: one of
    thousands might take it before its user does."""
    with open("/proc/sys/net/ipv4/ip_local_port_range", encoding="ascii") as ephemeral:
        first = int(ephemeral.read().split()[0])
    while True:
        endpoint = (host, random.randrange(10_000, max(first, 11_000)))
        with socket.socket(family_of(host), socket.SOCK_DGRAM) as udp, \
                socket.socket(family_of(host), socket.SOCK_STREAM) as tcp, contextlib.suppress(OSError):
            udp.bind(endpoint)
            tcp.bind(endpoint)
            return endpoint[1]


def address_text(host, port):
    return f"[{host}]:{port}" if ":" in host else f"{host}:{port}"


def run(*command, **how):
    """Runs a command-line tool to its end."""
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=2 * PATIENCE, **how)


def tool(*command):
    """What a command-line tool printed. It must end with status 0."""
    done = run(*command)
    assert done.returncode == 0, f"{' '.join(command)}: status {done.returncode}\n{done.stdout}{done.stderr}"
    return done.stdout


class Process:
    """A child process whose standard output, and standard error unless `stderr` says else, is read line by line as it comes."""

    def __init__(self, command, stderr=subprocess.STDOUT, environment=None, preparation=None):
        inherited = {k: v for k, v in os.environ.items() if k not in ("JOURNAL_STREAM", "STATE_DIRECTORY")}
        self.child = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=stderr,
                                      env=inherited | (environment or {}), preexec_fn=preparation)
        self.pid, self.send_signal = self.child.pid, self.child.send_signal
        self.lines = []
        self._changed = threading.Condition()
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        with self.child.stdout as lines:
            for line in lines:
                with self._changed:
                    self.lines.append(line.rstrip(b"\n").decode("utf-8", "surrogateescape"))
                    self._changed.notify_all()

    def wait_for_line(self, text, count=1):
        """The lines so far that contain `text`, once there are `count` of them."""
        seen, found = 0, []

        def enough():
            nonlocal seen
            found.extend(line for line in self.lines[seen:] if text in line)
            seen = len(self.lines)
            return len(found) >= count

        with self._changed:
            assert self._changed.wait_for(enough, PATIENCE), \
                f"no line with {text!r} ({count} times) in:\n" + "\n".join(self.lines[-20:])
        return found

    def output(self):
        """All lines; for a process that has ended."""
        self._reader.join(PATIENCE)
        return list(self.lines)

    def is_running(self):
        return self.child.poll() is None

    def wait(self, seconds=PATIENCE):
        return self.child.wait(seconds)

    def stop(self):
        """Ends the process; gives its exit status."""
        self.send_signal(signal.SIGTERM)
        with contextlib.suppress(subprocess.TimeoutExpired):
            self.wait()
        self.child.kill()
        self.output()
        return self.wait()

    def resident_kib(self):
        with open(f"/proc/{self.pid}/status", encoding="ascii") as status:
            return int(re.search(r"VmRSS:\s+(\d+)", status.read()).group(1))

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.pid}/fd"))

    def bound_ports(self):
        """The ports of the process' own UDP sockets."""
        sockets = tool("ss", "--udp", "--all", "--no-header", "--numeric", "--processes").splitlines()
        return {int(row.split()[3].rsplit(":", 1)[1]) for row in sockets if f"pid={self.pid}," in row}


class DemoFilter(Process):
    """The demo filtering service on ports of the system's choice."""

    def __init__(self, *services, quiet=False):
        """`services`: further options that take an address each, `--policy` say; their addresses come last."""
        listen = [x for option in ("--listen", *services) for x in (option, "127.0.0.1:0")]
        super().__init__([os.environ["QUILLET_DEMO_FILTER"], *listen, *(["--quiet"] if quiet else [])])
        lines = self.wait_for_line("listening on ", 1 + len(services))
        self.addresses = [line.split("listening on ")[1] for line in lines]
        self.address = self.addresses[0]


class Proxy(Process):
    """The proxy, listening on `hosts` at free ports, once it has bound them; `prefix` is the command that runs it."""

    def __init__(self, defaults_folder, vendor_data_file=None, hosts=("127.0.0.1",), port=None, arguments=(), prefix=(),
                 control="none", **how):
        self.defaults_folder = defaults_folder
        self.socket_path = control
        self.endpoints = [(host, port or free_port(host)) for host in hosts]
        self.endpoint = self.endpoints[0]
        options = [("--listen", address_text(*endpoint)) for endpoint in self.endpoints]
        options += [("--defaults-dir", defaults_folder)] if defaults_folder else []
        options += [("--vendor-data", vendor_data_file)] if vendor_data_file else []
        options += [("--control", control)] if control else []
        if "--source-app" in arguments and "--identify" not in arguments:
            arguments = ("--identify", "off", *arguments)  # the test's own application may be known
        super().__init__([*prefix, os.environ["QUILLET_PROXY"], *sum(options, ()), *arguments], **how)
        poll(self._is_bound, "the proxy has bound its ports")

    def _is_bound(self):
        assert self.is_running(), "the proxy has ended:\n" + "\n".join(self.output())
        return self.bound_ports() >= {port for _, port in self.endpoints}


class Relay(Process):
    """The relay service, once it is there. It takes its ports and finds its programs where they always are, so it
    runs in a network of its own, with `programs` as the folder that is searched first."""

    def __init__(self, folder, programs, arguments=(), environment=None):
        self.socket_path = os.path.join(folder, "group.com.quillet.filteringosx")
        places = {"RUNTIME_DIRECTORY": folder, "PATH": f"{programs}:{os.environ['PATH']}"}
        super().__init__([os.environ["QUILLET_RELAY"], *arguments], environment=places | (environment or {}))
        self.wait_for_line("*** XPC listener resumed ***")
        if "brief" not in arguments:
            self.wait_for_line(" port 989", 4)

    def said(self):
        """The texts of the records so far."""
        return [line.split("] ", 1)[-1] for line in list(self.lines)]

    def children(self):
        """The process ids of its children, zombies included."""
        return run("sh", "-c", f"cat /proc/{self.pid}/task/*/children").stdout.split()
