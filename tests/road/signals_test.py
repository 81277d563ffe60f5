"""What signals do: an end with status 0, and settings read again."""

import os
import signal

from roadlib import wire
from roadlib.case import IDENTITY, READ, RoadTest


class StopTest(RoadTest):
    def test_under_load_that_is_answered_and_that_is_not(self):
        for respond, number in ((None, signal.SIGTERM), (lambda query: [], signal.SIGINT)):
            upstream, proxy = self.road(respond)
            self.load(proxy, "example.com A\n", "-c", "50", "-q", "500", "-l", "60")
            upstream.wait_for_queries(500)
            for _ in range(2):  # the second one comes while it stops
                proxy.send_signal(number)
            self.assertEqual(proxy.wait(), 0)
            self.assertTrue(any("stopProxy, reason: " in line for line in proxy.output()))


class ReloadTest(RoadTest):
    def test_good_settings_are_used_and_bad_ones_are_not(self):
        first, proxy = self.road()
        second = self.upstream()
        path = self.vendor_file({})
        for number, text in enumerate(('{"organizationId": "\udcff"}', "null", "[" * 100_000,
                                       '{"organizationId": "org43"} x', None)):
            with self.subTest(text=text and text[:40]):
                os.remove(path)
                if text is not None:
                    self.vendor_file(text)
                proxy.send_signal(signal.SIGHUP)
                proxy.wait_for_line(path, number + 1)
                self.query(proxy)
                self.assertEqual(dict(wire.injected_options(first.queries[-1]))[65001], b"org42")
        self.reconfigure(proxy, {**IDENTITY, "filteringDNS": second.address, "organizationId": "org43"})
        self.query(proxy)
        self.assertEqual(dict(wire.injected_options(second.queries[-1]))[65001], b"org43")

    def test_without_vendor_data(self):
        proxy = self.proxy()
        proxy.wait_for_line(READ)
        proxy.send_signal(signal.SIGHUP)
        proxy.wait_for_line(READ, 2)
