"""Whose application a query is: found by the cgroup of the client's socket, or by its process."""

import os
import shutil
import signal

from roadlib import cgroup, wire
from roadlib.case import RoadTest
from roadlib.client import Client, TCPClient, dig
from roadlib.processes import poll

USER = "user.slice/user-7.slice/user@7.service/app.slice"
BROWSER = f"{USER}/app-gnome-org.example.Browser-1.scope"
SESSION = "user.slice/user-7.slice/session-4.scope"


class IdentifyTest(RoadTest):
    def cgroup(self, path):
        made = cgroup.Cgroup(path)
        self.addCleanup(made.remove)
        return made

    def proxy_of(self, *arguments):
        return self.road(settings={"addAppSenderId": "yes"}, arguments=arguments)

    def ask(self, proxy, place, client=Client):
        with place.inside(), client(proxy.endpoint) as made:
            query = wire.query("example.com")
            self.assertEqual(made.ask(query), wire.answer_to(query))

    def application(self, server):
        """Of the last query that the filtering service got."""
        query = server.wait_for_queries(1)[-1]
        server.queries.clear()
        return dict(wire.injected_options(query))[65005].decode()

    def wait_for_application(self, ask, server, application):
        """Asks until it is known. The first time, unless the machine is busy: the proxy waits for so long only."""
        poll(lambda: (ask(), self.application(server))[1] == application, f"the application {application} is known")

    def test_by_the_cgroup_and_while_it_can_be_told(self):
        browser, session = self.cgroup(BROWSER), self.cgroup(SESSION)
        filtering, proxy = self.proxy_of("--source-app", "fallback", "--identify", "cgroup")
        self.wait_for_application(lambda: self.ask(proxy, browser), filtering, "org.example.Browser")
        for client in Client, TCPClient:
            for place, application in (browser, "org.example.Browser"), (session, "fallback"):
                self.ask(proxy, place, client)
                self.assertEqual(self.application(filtering), application)
        proxy.send_signal(signal.SIGSTOP)
        with browser.inside(), Client(proxy.endpoint) as client:
            client.send(wire.query("example.com"))
        proxy.send_signal(signal.SIGCONT)  # the client has gone
        self.assertEqual(self.application(filtering), "fallback")

    def test_not_at_all_and_by_the_process(self):
        dig_itself = os.path.realpath(shutil.which("dig"))
        for how, place, application in ("off", BROWSER, "fallback"), ("process", SESSION, dig_itself):
            filtering, proxy = self.proxy_of("--source-app", "fallback", "--identify", how)
            with self.cgroup(place).inside():
                self.wait_for_application(lambda p=proxy: dig(p.endpoint, "example.com"), filtering, application)


setUpModule = cgroup.require
