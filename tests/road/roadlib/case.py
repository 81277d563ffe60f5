"""The base of the end-to-end tests: what a test starts is ended after it, and must have ended well."""

import contextlib
import json
import os
import signal
import tempfile
import unittest

from roadlib import wire
from roadlib.client import ask
from roadlib.processes import DemoFilter, Process, Proxy
from roadlib.upstream import Upstream

# The part of the usual load that a slow build carries.
LOAD = float(os.environ.get("QUILLET_LOAD", "1"))
IS_SANITIZED = os.environ.get("QUILLET_SANITIZED", "") != ""
IDENTITY = {"organizationId": "org42", "orgUnitId": "unit7", "userId": "u1", "serialNumber": "C02XL0GYJGH5",
            "ttl": "300"}
READ = "initVendorSettings  - done"  # what the proxy says once it has its settings


class RoadTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory(prefix="quillet-road-"))

    def vendor_file(self, settings, name="vendor-data.json"):
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="utf-8", errors="surrogateescape") as file:
            file.write(settings if isinstance(settings, str) else json.dumps(settings))
        return path

    def upstream(self, respond=None, **how):
        return self.enterContext(contextlib.closing(Upstream(respond, **how)))

    def started(self, process):
        """`process`, which must end well when the test does."""
        self.addCleanup(lambda: self.assertEqual(process.stop(), 0, "\n".join(process.output()[-40:])))
        return process

    def demo_filter(self, *services, **how):
        return self.started(DemoFilter(*services, **how))

    def proxy(self, settings=None, **how):
        """A proxy with `settings` as vendor data (none for None)."""
        path = None if settings is None else self.vendor_file(settings)
        how.setdefault("defaults_folder", tempfile.mkdtemp(dir=self.folder))
        return self.started(Proxy(vendor_data_file=path, **how))

    def load(self, proxy, names, *options):
        """dnsperf, which asks for `names`: in each line a name and a type."""
        host, port = proxy.endpoint
        load = Process(["dnsperf", "-s", host, "-p", str(port), "-d", self.vendor_file(names, "names"), *options])
        self.addCleanup(load.stop)
        return load

    def reconfigure(self, proxy, settings):
        """Replaces the vendor data of a proxy that `proxy` started, and has it read."""
        before = len(proxy.wait_for_line(READ))
        self.vendor_file(settings)
        proxy.send_signal(signal.SIGHUP)
        proxy.wait_for_line(READ, before + 1)

    def road(self, respond=None, settings=None, **how):
        """An upstream in the filtering service's place and a proxy that uses it."""
        server = self.upstream(respond)
        return server, self.proxy({"filteringDNS": server.address, **IDENTITY, **(settings or {})}, **how)

    def query(self, proxy, name="example.com", *arguments, **how):
        """One query, made as `wire.query` makes it, through the proxy to an upstream that answers; its bytes."""
        query = wire.query(name, *arguments, **how)
        self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
        return query
