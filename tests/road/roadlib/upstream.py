"""An upstream DNS server of the test's own: keeps every query as received, answers as told."""

import socket
import struct
import threading

from roadlib import wire
from roadlib.processes import PATIENCE, family_of

_FAREWELL = b"\0the test is over\0"


class Upstream:
    """`respond` gets a query's bytes and gives the datagrams to send back, none to stay silent."""

    def __init__(self, respond=None, host="127.0.0.1", port=0):
        self.respond = respond or (lambda query: [wire.answer_to(query)])
        self.queries = []
        self._failure = None
        self._changed = threading.Condition()
        self._socket = socket.socket(family_of(host), socket.SOCK_DGRAM)
        self._socket.bind((host, port))
        self.address = f"{host}:{self._socket.getsockname()[1]}"
        self._thread = threading.Thread(target=self._serve, daemon=True)
        self._thread.start()

    def _serve(self):
        while True:
            query, peer = self._socket.recvfrom(65535)
            if query == _FAREWELL:
                return
            with self._changed:
                self.queries.append(query)
                self._changed.notify_all()
            try:
                for answer in self.respond(query):
                    self._socket.sendto(answer, peer)
            except (IndexError, struct.error):
                pass  # the query was cut or garbled: nothing to answer
            except Exception as error:
                self._failure = error  # of the test itself

    def wait_for_queries(self, count):
        """The queries so far, once there are `count` of them."""
        with self._changed:
            enough = self._changed.wait_for(lambda: len(self.queries) >= count, PATIENCE)
            assert enough, f"{len(self.queries)} of {count} queries reached the upstream"
            return list(self.queries)

    def close(self):
        with socket.socket(self._socket.family, socket.SOCK_DGRAM) as s:
            s.sendto(_FAREWELL, self._socket.getsockname())
        self._thread.join(PATIENCE)
        self._socket.close()
        if self._failure:
            raise self._failure


def by_name(part, rule):
    """A `respond` that is `rule` for names that contain `part`, and answers the others."""
    return lambda query: rule(query) if part in wire.question(query)[0] else [wire.answer_to(query)]
