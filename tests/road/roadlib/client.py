"""DNS clients: one socket by hand, and the usual tools."""

import select
import socket
import subprocess

from roadlib import wire
from roadlib.processes import PATIENCE, family_of


class Client:
    """One connected UDP socket: only what comes from the asked address reaches it."""

    def __init__(self, endpoint):
        self.socket = socket.socket(family_of(endpoint[0]), socket.SOCK_DGRAM)
        self.socket.connect(endpoint)
        self.send = self.socket.send

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.socket.close()

    def receive(self, seconds=PATIENCE):
        """The next datagram, or None after `seconds`."""
        ready, _, _ = select.select([self.socket], [], [], seconds)
        return self.socket.recv(65535) if ready else None

    def ask(self, query):
        self.send(query)
        answer = self.receive()
        assert answer is not None, f"no answer to {query.hex()}"
        return answer


class TCPClient:
    """One TCP connection, from either side."""

    def __init__(self, endpoint=None, accepted=None):
        self.socket = accepted or socket.create_connection(endpoint)
        self.socket.settimeout(PATIENCE)
        self.send = self.socket.sendall
        self._stream = self.socket.makefile("rb")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._stream.close()
        self.socket.close()

    def receive(self):
        """The next message, or None when the other side sends no more."""
        length = self._stream.read(2)
        return self._stream.read(int.from_bytes(length, "big")) if length else None

    def ask(self, query):
        self.send(wire.framed(query))
        return self.receive()


def ask(endpoint, query):
    """One query from a socket of its own; its answer."""
    with Client(endpoint) as client:
        return client.ask(query)


def run(*command):
    """Runs a command-line tool to its end."""
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=2 * PATIENCE,
                          check=False)


def tool(*command):
    """What a command-line tool printed. It must end with status 0."""
    done = run(*command)
    assert done.returncode == 0, f"{' '.join(command)}: status {done.returncode}\n{done.stdout}{done.stderr}"
    return done.stdout


def dig(endpoint, *arguments):
    return tool("dig", f"@{endpoint[0]}", "-p", str(endpoint[1]), "+tries=1", "+timeout=15", *arguments)
