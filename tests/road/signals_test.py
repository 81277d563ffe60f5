"""What signals do: an end with status 0, and settings read again."""

import os
import signal
import threading

from roadlib import wire
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import Client, ask, ask_again
from roadlib.processes import SLOWNESS

# Within this the provider is stopped, also under load.
SECONDS_TO_STOP = 1 * SLOWNESS


class Load:
    """Queries from many sockets, as fast as they go, until told to stop."""

    def __init__(self, endpoint):
        self._clients = [Client(endpoint) for _ in range(50)]
        self._over = threading.Event()
        self._thread = threading.Thread(target=self._send, daemon=True)
        self._thread.start()

    def _send(self):
        while not self._over.is_set():
            for number, client in enumerate(self._clients):
                try:
                    client.send(wire.query(f"h{number}.example"))
                    while client.receive(0) is not None:
                        pass
                except ConnectionRefusedError:
                    pass  # the proxy has gone

    def stop(self):
        """May be called again."""
        self._over.set()
        self._thread.join()
        for client in self._clients:
            client.socket.close()


class StopTest(RoadTest):
    def assert_stops(self, proxy, number):
        proxy.send_signal(number)
        self.assertEqual(proxy.wait(SECONDS_TO_STOP), 0)

    def test_idle(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number=number):
                _, proxy = self.road(hosts=("127.0.0.1", "::1"))
                proxy.wait_for_line("initVendorSettings  - done")
                self.assert_stops(proxy, number)
                self.assertTrue(any("stopProxy, reason: " in line for line in proxy.output()))

    def test_under_load(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number=number):
                upstream, proxy = self.road(discard=True)
                load = Load(proxy.endpoint)
                self.addCleanup(load.stop)
                upstream.wait_for_queries(1000)
                self.assert_stops(proxy, number)

    def test_with_queries_that_nobody_answers(self):
        upstream, proxy = self.road(lambda query: [])
        clients = [Client(proxy.endpoint) for _ in range(100)]
        for client in clients:
            client.send(wire.query("mute.example"))
            self.addCleanup(client.socket.close)
        upstream.wait_for_queries(100)
        self.assert_stops(proxy, signal.SIGTERM)

    def test_twice(self):
        _, proxy = self.road()
        proxy.send_signal(signal.SIGTERM)
        proxy.send_signal(signal.SIGTERM)
        self.assertEqual(proxy.wait(SECONDS_TO_STOP), 0)


class ReloadTest(RoadTest):
    def identity_seen(self, proxy, upstream):
        count = len(upstream.queries)
        ask(proxy.endpoint, wire.query("example.com"))
        options = wire.injected_options(upstream.wait_for_queries(count + 1)[-1])
        return dict(options)[65001].decode()

    def test_new_settings_are_used(self):
        first, proxy = self.road()
        second = self.upstream()
        self.assertEqual(self.identity_seen(proxy, first), "org42")

        self.reconfigure(proxy, {**IDENTITY, "filteringDNS": second.address, "organizationId": "org43"})
        self.assertEqual(self.identity_seen(proxy, second), "org43")
        self.assertEqual(len(first.queries), 1)

    def test_bad_settings_are_not(self):
        upstream, proxy = self.road()
        good = {"filteringDNS": upstream.address, **IDENTITY}
        proxy.wait_for_line("initVendorSettings  - done")
        for text in ("", "{", '{"organizationId": "\udcff"}', "[]", "7", "null", '"text"', '{"organizationId": "org43",}', "\0\xff",
                     "[" * 100_000, '{"a":' * 10_000, '{"organizationId": "org43"} x'):
            with self.subTest(text=text[:40]):
                path = self.vendor_file(text)
                complaints = sum(path in line for line in list(proxy.lines))
                proxy.send_signal(signal.SIGHUP)
                proxy.wait_for_line(path, complaints + 1)
                self.assertEqual(self.identity_seen(proxy, upstream), "org42")
        self.reconfigure(proxy, good | {"organizationId": "org44"})
        self.assertEqual(self.identity_seen(proxy, upstream), "org44")

    def test_settings_file_that_has_gone(self):
        upstream, proxy = self.road()
        proxy.wait_for_line("initVendorSettings  - done")
        path = self.vendor_file({})
        os.remove(path)
        proxy.send_signal(signal.SIGHUP)
        proxy.wait_for_line(path)
        self.assertEqual(self.identity_seen(proxy, upstream), "org42")

    def test_without_vendor_data(self):
        proxy = self.proxy()
        proxy.wait_for_line("initVendorSettings  - done")
        proxy.send_signal(signal.SIGHUP)
        proxy.wait_for_line("initVendorSettings  - done", 2)

    def test_under_load(self):
        upstream, proxy = self.road(discard=True)
        load = Load(proxy.endpoint)
        self.addCleanup(load.stop)
        for number in range(20):
            self.vendor_file({"filteringDNS": upstream.address, "organizationId": f"org{number}"})
            proxy.send_signal(signal.SIGHUP)
            upstream.wait_for_queries(len(upstream.queries) + 50)
        load.stop()
        query = wire.query("example.com")
        self.assertEqual(ask_again(proxy.endpoint, query), wire.answer_to(query))


if __name__ == "__main__":
    main()
