"""A client of the relay's XPC service: JSON-RPC 2.0, one message a line, over a Unix socket."""

import json
import socket

from roadlib.processes import PATIENCE


class XpcClient:
    def __init__(self, relay):
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.socket.settimeout(PATIENCE)
        self.socket.connect(relay.socket_path)
        self._lines = self.socket.makefile("rb")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        self._lines.close()
        self.socket.close()

    def send(self, data):
        self.socket.sendall(data)

    def answer(self):
        """The next answer; None when the service has closed the connection."""
        line = self._lines.readline()
        return json.loads(line) if line else None

    def request(self, method, *params, number=1):
        message = {"jsonrpc": "2.0", "id": number, "method": method, "params": params}
        self.send(json.dumps(message).encode() + b"\n")

    def call(self, method, *params):
        """The result of a call, or its error's code."""
        self.request(method, *params)
        answer = self.answer()
        return answer["result"] if "result" in answer else answer["error"]["code"]
