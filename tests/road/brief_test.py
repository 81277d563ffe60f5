"""The brief log: one line for each query, whatever becomes of it, and no other record of one."""

from roadlib import namespace, wire
from roadlib.case import IDENTITY, RoadTest
from roadlib.client import Client
from roadlib.processes import Relay, free_port

BRIEF = ("--log", "brief", "--source-app", "app")


class OutcomeTest(RoadTest):
    def test_given_up(self):
        nobody = f"127.0.0.1:{free_port()}"
        silent = self.upstream(lambda _: [])
        what = "app=app rule=%d server=%s rcode=none"
        proxy = self.proxy({"filteringDNS": silent.address, "mappedDomains": f"[refused:{nobody}]", **IDENTITY},
                           arguments=BRIEF)
        with Client(proxy.endpoint) as client:
            client.send(wire.query("refused"))
            proxy.wait_for_line(f"query refused A {what % (3, nobody)} ms=")
            client.send(b"garbage")
            silent.wait_for_queries(1)
        proxy.stop()
        self.assertIn(f"query - - {what % (5, silent.address)} ms=", proxy.output()[-1])

    def test_a_report_query_prints_its_report(self):
        _, proxy = self.road(arguments=BRIEF)
        self.query(proxy, "quillet_osx_filter_p_app_.example")
        proxy.wait_for_line("query quillet_osx_filter_p_app_.example A")
        for line in ("vendorData: ", "----> start of flow manager report <----", "->flow 1, isFinished: false"):
            proxy.wait_for_line(line)


class RelayTest(RoadTest):
    def test_what_clients_say_and_no_more(self):
        relay = self.started(Relay(self.folder, self.folder, ("--log", "brief", "--shell", "/bin/sh", "--flush-command",
                                                              "echo flushed")))
        with Client(("127.0.0.1", 9898)) as client:
            for datagram in (b"&*ALhello", b'{"cmdType":"notification","payload":"started"}',
                             b'{"cmdType":"command","payload":"bypassAllOn"}'):
                client.send(datagram)
            client.ask(b"&*requestCU")
        relay.wait_for_line("request CU received")
        self.assertEqual(relay.said(), [
            "*** XPC and UDP started_ ***", "*** XPC listener resumed ***", "Agent log: hello",
            "got notification from Ext: started", "got command from Ext: bypassAllOn", "request CU received, cu: "])


setUpModule = namespace.enter
