"""A client of the relay's XPC service: JSON-RPC 2.0, one message a line, over a Unix socket."""

import json
import socket

from roadlib.processes import PATIENCE


class XpcClient:
    def __init__(self, relay):
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.socket.settimeout(PATIENCE)
        self.socket.connect(relay.socket_path)
        self.send = self.socket.sendall
        self._lines = self.socket.makefile("rb")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        self._lines.close()
        self.socket.close()

    def request(self, method, *params):
        message = {"jsonrpc": "2.0", "id": 1, "method": method, "params": params}
        self.send(json.dumps(message).encode() + b"\n")

    def result(self):
        """The result of the next answer, or its error's code."""
        answer = json.loads(self._lines.readline())
        return answer["result"] if "result" in answer else answer["error"]["code"]

    def call(self, method, *params):
        self.request(method, *params)
        return self.result()
