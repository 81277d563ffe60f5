"""Connections, and DNS clients: one socket by hand, and the usual tool."""

import contextlib
import socket

from roadlib import wire
from roadlib.processes import PATIENCE, family_of, tool


class Connection(contextlib.AbstractContextManager):
    """A connected socket, with `stream` to read from it."""

    def __init__(self, connected):
        self.socket, self.send, self.stream = connected, connected.sendall, connected.makefile("rb")
        self.socket.settimeout(PATIENCE)

    def __exit__(self, *_):
        self.close()

    def close(self):
        self.stream.close()
        self.socket.close()


class Client(Connection):
    """One UDP socket: only what comes from the asked address reaches it."""

    def __init__(self, endpoint):
        super().__init__(socket.socket(family_of(endpoint[0]), socket.SOCK_DGRAM))
        self.socket.connect(endpoint)

    def receive(self):
        """The next datagram."""
        return self.socket.recv(65535)

    def ask(self, query):
        self.send(query)
        return self.receive()


class TCPClient(Connection):
    """One TCP connection, from either side."""

    def __init__(self, endpoint=None, accepted=None):
        super().__init__(accepted or socket.create_connection(endpoint))

    def receive(self):
        """The next message, or None when the other side sends no more."""
        length = self.stream.read(2)
        return self.stream.read(int.from_bytes(length, "big")) if length else None

    def ask(self, query):
        self.send(wire.framed(query))
        return self.receive()


def ask(endpoint, query):
    """One query from a socket of its own; its answer."""
    with Client(endpoint) as client:
        return client.ask(query)


def dig(endpoint, *arguments):
    return tool("dig", f"@{endpoint[0]}", "-p", str(endpoint[1]), "+tries=1", "+timeout=15", *arguments)
