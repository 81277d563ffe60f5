"""Queries by TCP: the usual tools, and what an upstream has truncated."""

from roadlib import wire
from roadlib.case import RoadTest
from roadlib.client import TCPClient, dig
from roadlib.processes import tool


class TCPTest(RoadTest):
    def test_dig_and_kdig(self):
        _, proxy = self.road(hosts=("127.0.0.1", "::1"))
        for host, port in proxy.endpoints:
            self.assertEqual(dig((host, port), "+tcp", "+keepopen", "+short", "a.example", "b.example"), "1.2.3.4\n" * 2)
            shown = tool("kdig", f"@{host}", "-p", str(port), "+tcp", "+keepopen", "+retry=0", "a.example", "b.example")
            self.assertEqual([shown.count(text) for text in ("1.2.3.4", "(TCP)", "WARNING")], [2, 2, 0])

    def test_a_truncated_answer_goes_back_as_it_came(self):
        query = wire.query("a.example")
        truncated = query[:2] + b"\x83\x80" + wire.answer_to(query)[4:]
        upstream, proxy = self.road(lambda _: [truncated])
        with TCPClient(proxy.endpoint) as client:
            self.assertEqual(client.ask(query), truncated)
        self.assertEqual(dict(wire.injected_options(upstream.queries[0]))[65001], b"org42")
