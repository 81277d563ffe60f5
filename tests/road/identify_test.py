"""Whose application a query is: found by the cgroup of the client's socket, or by its process."""

import os
import shutil
import signal
import sys

from roadlib import wire
from roadlib.case import RoadTest, main
from roadlib.cgroup import Cgroup
from roadlib.client import Client, TCPClient, dig
from roadlib.namespace import SKIPPED
from roadlib.processes import poll

USER = "user.slice/user-7.slice/user@7.service/app.slice"
BROWSER = "app-gnome-org.example.Browser-1.scope"
SOCK_DIAG = "4"


def has_diagnosis_socket(proxy):
    """Whether the process holds a netlink socket of that protocol."""
    held = set()
    for entry in os.scandir(f"/proc/{proxy.pid}/fd"):
        held.add(os.readlink(entry.path))
    with open("/proc/net/netlink", encoding="ascii") as table:
        rows = [line.split() for line in table][1:]
    return any(row[1] == SOCK_DIAG and f"socket:[{row[-1]}]" in held for row in rows)


class IdentifyTest(RoadTest):
    def cgroup(self, path):
        made = Cgroup(path)
        self.addCleanup(made.remove)
        return made

    def proxy_of(self, *arguments, **settings):
        """A proxy and the server in the filtering service's place."""
        return self.road(settings={"addAppSenderId": "yes", **settings}, arguments=("--source-app", "fallback",
                                                                                  *arguments))

    def ask(self, proxy, cgroup, client):
        with cgroup.inside(), client(proxy.endpoint) as made:
            query = wire.query("example.com")
            self.assertEqual(made.ask(query), wire.answer_to(query))

    def application(self, server):
        """Of the last query that the filtering service got."""
        query = server.wait_for_queries(1)[-1]
        server.queries.clear()
        return dict(wire.injected_options(query))[65005].decode()

    def assert_application(self, server, application):
        self.assertEqual(self.application(server), application)

    def wait_for_application(self, ask, server, application):
        """Asks until it is known. The first time, unless the machine is busy: the proxy waits for so long only."""
        poll(lambda: (ask(), self.application(server))[1] == application, f"the application {application} is known")

    def test_rules_and_option_by_the_application(self):
        browser = self.cgroup(f"{USER}/{BROWSER}")
        allowed = self.cgroup(f"{USER}/app-flatpak-com.example.Allowed-2.scope")
        local = self.cgroup(f"{USER}/app-com.apple.nsupdate@3.service")
        session = self.cgroup("user.slice/user-7.slice/session-4.scope")
        second, network = self.upstream(), self.upstream()
        filtering, proxy = self.proxy_of("--identify", "cgroup", secondDNS=second.address,
                                         localNetworkDNS=network.address, allowPackages="example.allowed")
        self.wait_for_application(lambda: self.ask(proxy, browser, Client), filtering, "org.example.Browser")
        for client in Client, TCPClient:
            for cgroup, server in (allowed, second), (local, network):
                self.ask(proxy, cgroup, client)
                self.assertEqual((len(server.queries), filtering.queries), (1, []))
                server.queries.clear()
            for cgroup, application in (browser, "org.example.Browser"), (session, "fallback"):
                self.ask(proxy, cgroup, client)
                self.assert_application(filtering, application)
        late = self.cgroup("system.slice/late.service")  # the proxy has not seen it
        self.wait_for_application(lambda: self.ask(proxy, late, Client), filtering, "late.service")

    def test_client_that_has_gone(self):
        browser = self.cgroup(f"{USER}/{BROWSER}")
        filtering, proxy = self.road(settings={"addAppSenderId": "yes"})  # without any option
        self.wait_for_application(lambda: self.ask(proxy, browser, Client), filtering, "org.example.Browser")
        proxy.send_signal(signal.SIGSTOP)
        with browser.inside(), Client(proxy.endpoint) as client:
            client.send(wire.query("example.com"))
        proxy.send_signal(signal.SIGCONT)
        self.assert_application(filtering, "unknown")

    def test_not_at_all(self):
        browser = self.cgroup(f"{USER}/{BROWSER}")
        filtering, proxy = self.proxy_of("--identify", "off")
        self.ask(proxy, browser, Client)
        self.assert_application(filtering, "fallback")
        self.assertFalse(has_diagnosis_socket(proxy))

    def test_by_the_process(self):
        session = self.cgroup("user.slice/user-7.slice/session-4.scope")
        filtering, proxy = self.proxy_of("--identify", "process")
        with session.inside():
            self.wait_for_application(lambda: dig(proxy.endpoint, "example.com"), filtering,
                                      os.path.realpath(shutil.which("dig")))
        self.assertTrue(has_diagnosis_socket(proxy))


def can_make_cgroups():
    try:
        Cgroup("probe").remove()
        return True
    except OSError as error:
        print(f"skipped: {error}")
        return False


if __name__ == "__main__":
    if not can_make_cgroups():
        sys.exit(SKIPPED)
    main()
