"""What proxy and relay tell the service manager, which listens at a socket of the test's (sd_notify(3))."""

import os
import signal
import socket
import time

from roadlib import namespace
from roadlib.case import RoadTest
from roadlib.processes import PATIENCE, Relay

WATCHDOG = 200_000  # microseconds


class ServiceTest(RoadTest):
    def setUp(self):
        super().setUp()
        path = os.path.join(self.folder, "notify")
        self.manager = self.enterContext(socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM))
        self.manager.bind(path)
        self.manager.settimeout(PATIENCE)
        self.environment = {"NOTIFY_SOCKET": path, "WATCHDOG_USEC": str(WATCHDOG)}

    def next(self):
        """The lines of the next notification."""
        return self.manager.recv(4096).decode().split("\n")

    def next_change(self):
        """The next that is no sign of life."""
        return next(told for told in iter(self.next, None) if told != ["WATCHDOG=1"])

    def assert_alive_then_ends(self, process):
        for _ in range(3):
            self.assertEqual(self.next(), ["WATCHDOG=1"])
        process.send_signal(signal.SIGTERM)
        self.assertEqual(self.next_change()[0], "STOPPING=1")
        self.assertEqual(process.wait(), 0)

    def test_proxy(self):
        proxy = self.proxy({}, environment=self.environment)
        serving = f"STATUS=Serving {proxy.endpoint[0]}:{proxy.endpoint[1]}"
        self.assertEqual(self.next_change(), ["READY=1", serving])
        for settings, status in (({"organizationId": "org43"}, serving), ("[]", serving + "; settings of before,")):
            with self.subTest(settings=settings):
                self.vendor_file(settings)
                before = time.monotonic_ns() // 1000
                proxy.send_signal(signal.SIGHUP)
                reloading, monotonic, _ = self.next_change()
                name, _, microseconds = monotonic.partition("=")
                self.assertEqual((reloading, name), ("RELOADING=1", "MONOTONIC_USEC"))
                self.assertTrue(before <= int(microseconds) <= time.monotonic_ns() // 1000)
                ready, told = self.next_change()
                self.assertEqual((ready, told[:len(status)]), ("READY=1", status))
        self.assert_alive_then_ends(proxy)

    def test_relay(self):
        relay = self.started(Relay(self.folder, self.folder, environment=self.environment))
        self.assertEqual(self.next_change(), ["READY=1", "STATUS=Serving UDP ports 9898 and 9899"])
        self.assert_alive_then_ends(relay)


setUpModule = namespace.enter
