"""A client of the relay's XPC service or the proxy's control socket: JSON-RPC 2.0, one message a line."""

import json
import socket

from roadlib.client import Connection


class XpcClient(Connection):
    def __init__(self, server):
        super().__init__(socket.socket(socket.AF_UNIX))
        self.socket.connect(server.socket_path)

    def request(self, method, *params, **named):
        message = {"jsonrpc": "2.0", "id": 1, "method": method} | ({"params": named or params} if named or params else {})
        self.send(json.dumps(message).encode() + b"\n")

    def message(self):
        """The next one; None at the end."""
        line = self.stream.readline()
        return json.loads(line) if line else None

    def result(self):
        """The result of the next answer, or its error's code."""
        answer = self.message()
        return answer["result"] if "result" in answer else answer["error"]["code"]

    def call(self, method, *params, **named):
        self.request(method, *params, **named)
        return self.result()
