"""The control socket: who is served, where it lies, what its methods tell, and clients that misbehave."""

import contextlib
import json
import os
import re
import select
import stat

from prometheus_client.openmetrics.parser import text_string_to_metric_families
from roadlib import namespace, wire
from roadlib.case import IDENTITY, IS_SANITIZED, LOAD, READ, RoadTest
from roadlib.client import Client
from roadlib.processes import PATIENCE, poll
from roadlib.xpc import XpcClient

SYSTEM = "198.51.100.99"
TURNED_AWAY = {"jsonrpc": "2.0", "id": None, "error": {"code": -32001, "message": "Not allowed"}}


class ControlTest(RoadTest):
    def setUp(self):
        super().setUp()
        os.chmod(self.folder, 0o755)
        self.path = os.path.join(self.folder, "sub", "control")

    def proxy(self, settings=None, **how):
        proxy = super().proxy(settings, **how)
        proxy.wait_for_line(READ)
        return proxy

    def client(self, proxy):
        return self.enterContext(XpcClient(proxy))


class MethodsTest(ControlTest):
    def check(self, proxy, client, watcher, servers, name):
        """What is explained is what a query then does; the number of the rule."""
        told = client.call("explain", name=name)
        with Client(proxy.endpoint) as asking:
            asking.ask(wire.query(name))
        seen = {server.address: server.queries.pop() for server in servers.values() if server.queries}
        [(address, query)] = seen.items()
        options = [[str(code), value.decode()] for code, value in wire.injected_options(query)] if told["identity"] else []
        at_its_time = {"65015": dict(options).get("65015")} if options else {}
        self.assertEqual({**told["options"], **at_its_time}, dict(options))
        self.assertEqual(told["identity"], query[12:] != wire.query(name)[12:])
        self.assertEqual("system" if address == f"{SYSTEM}:53" else address, told["server"])
        params = watcher.message()["params"]
        self.assertGreater(params.pop("ms"), 0)
        self.assertEqual(params, {"name": name.rstrip("."), "type": "A", "app": proxy.app, "rule": told["rule"],
                                  "server": told["server"], "rcode": "NOERROR"})
        return told["rule"], told["matched"], told["from"]

    def test_explain_agrees_with_what_a_query_does(self):
        servers = {name: self.upstream() for name in ("filtering", "second", "network", "mapped", "lab")}
        servers["system"] = self.upstream(host=SYSTEM, port=53)
        at = {name: server.address for name, server in servers.items()}
        policy = {"status": True, "dnsServerSettings": [{"assignedDomains": ["wiki", "b.lab"], "dnsServerIP": at["lab"]}]}
        usual = {**IDENTITY, "filteringDNS": at["filtering"], "secondDNS": at["second"], "localNetworkDNS": at["network"],
                 "--mappedDomains": f"[lab:{at['mapped']},Case:{at['mapped']}]",
                 "policyServer": self.upstream(lambda _: [json.dumps(policy).encode()]).address}
        filtered, lab, wiki = (5, None, None), (3, "lab", "--mappedDomains"), (4, "wiki", "policy")
        names = ("a.example", "x.lab", "www.b.lab.", "wiki.corp", "case", "Case.", "b\u00fc.example", "www.")
        kinds = [filtered, lab, lab, wiki, filtered, (3, "Case", "--mappedDomains"), filtered, filtered]
        listed, all_of_them = ([(2, entry, key)] * 8 for entry, key in (("Fire", "allow--Packages"), (None, "allowAll")))
        rows = (({}, "app", kinds), ({"userAuthEnabled": "false", "addAppSenderId": "YES", "ttl": "x" * 65_536}, "app", kinds),
                ({"allow--Packages": ",Fire"}, "org.firefox", listed), ({"allow--Packages": ",Fire"}, "app", kinds),
                ({"allowAll": "true"}, "app", all_of_them),
                ({"jsonVars": '{"allowPackages": ["fire"]}'}, "firefox", [(2, "fire", "jsonVars")] * 8),
                ({"allowAll": "true"}, "com.apple.opendirectoryd", [(1, "com.apple.opendirectoryd", "built in")] * 8))
        for settings, app, expected in rows:
            with self.subTest(settings=settings, app=app), \
                    namespace.resolv_conf(self.folder, f"nameserver {SYSTEM}"):
                proxy = self.proxy({**usual, **settings}, arguments=("--source-app", app), control=self.path)
                proxy.app = app
                client, watcher = self.client(proxy), self.client(proxy)
                self.assertIsNone(client.call("status")["policy"]["outcome"])
                self.query(proxy, "first.example")
                poll(lambda: client.call("status")["policy"]["outcome"] == "fetched", "the policy is there")
                for server in servers.values():
                    server.queries.clear()
                self.assertIsNone(watcher.call("watch"))
                self.assertEqual([self.check(proxy, client, watcher, servers, name) for name in names], expected)
                client.call("bypass", on=True)
                proxy.wait_for_line("Received command: bypassAllOn")
                self.assertEqual(self.check(proxy, client, watcher, servers, names[1]), (0, None, None))
                self.check_counts(proxy, client, [rule for rule, *_ in expected] + [0])
                proxy.stop()

    def check_counts(self, proxy, client, rules):
        """After one query of a rule that is not known and one of each of `rules`, and a report of them."""
        status = client.call("status")
        counts = {int(rule): count for rule, count in status["queries"]["rule"].items()}
        self.assertEqual((sum(counts.values()), counts[0]), (len(rules) + 1, 1))
        self.assertTrue(all(0 <= counts[rule] - rules.count(rule) <= 1 for rule in counts))
        self.assertEqual([status[key] for key in ("pid", "answered", "declined", "unanswered", "open", "bypass", "log")],
                         [proxy.pid, len(rules), 1, 0, 0, True, "full"])
        self.assertEqual(status["queries"]["transport"], {"udp": len(rules) + 1, "tcp": 0})
        metrics = {(sample.name, *sample.labels.values()): sample.value
                   for family in text_string_to_metric_families(client.call("metrics")) for sample in family.samples}
        self.assertEqual((metrics["quillet_queries_total", "answered"], metrics["quillet_answer_seconds_count",]),
                         (len(rules), len(rules)))
        count = len(proxy.lines)
        report = client.call("report", app=proxy.app.upper(), detailed=True).splitlines()
        self.assertEqual([line.split(",")[0] for line in report if line.startswith("->")],
                         [f"->flow {key}" for key in range(1, len(rules) + 1)])
        self.assertEqual((report[0], report[-1], len(proxy.lines)), (
            "----> start of flow manager report <----", "----< end of flow manager report >----", count))

    def test_commands_and_what_is_none(self):
        upstream, proxy = self.road(control=self.path)
        client = self.client(proxy)
        for method, params in (("nope", {}), ("status", {"a": 1}), ("explain", {}), ("explain", {"name": 1}),
                               ("explain", {"name": "a" * 256}), ("report", {"seconds": -1}), ("bypass", {"on": "yes"}),
                               ("log", {"mode": "loud"})):
            self.assertEqual(client.call(method, **params), -32602 if params or method == "explain" else -32601, method)
        self.assertEqual(client.call("status", "by position"), -32602)
        client.call("log", mode="brief")
        proxy.wait_for_line("log mode: brief")
        self.query(proxy, "brief.example")
        proxy.wait_for_line("query brief.example")
        self.assertIsNone(client.call("reload"))
        proxy.wait_for_line("initVendorSettings  - done", 2)
        self.vendor_file("{")
        upstream.respond = lambda _: []
        watcher = self.client(proxy)
        watcher.call("watch")
        with Client(proxy.endpoint) as asking:
            count = len(upstream.queries)
            asking.send(wire.query("last.example"))
            upstream.wait_for_queries(count + 1)
        client.request("reload")
        error = client.message()["error"]
        self.assertEqual((error["code"], os.path.basename(error["message"])),
                         (-32002, "vendor-data.json: not valid JSON"))
        proxy.stop()
        self.assertEqual(watcher.message()["params"]["name"], "last.example")


class AbuseTest(ControlTest):
    def test_lines_that_are_none_and_clients_without_number(self):
        _, proxy = self.road(control=self.path)
        half, client = self.client(proxy), self.client(proxy)
        half.send(b'{"jsonrpc": "2.0", "id"')
        for junk, code in ((b"\xff\n", -32700), (b"{" * 16_000 + b"\n", -32700), (b"x" * 300_000 + b"\n", -32700),
                           (b"[]\n", -32600), (b"\n", -32700)):
            client.send(junk)
            self.assertEqual(client.result(), code)
        half.send(b': 2, "method": "status"}\n')
        self.assertEqual(half.result()["pid"], proxy.pid)
        others = [self.client(proxy) for _ in range(254)]
        self.assertEqual({other.call("status")["pid"] for other in others}, {proxy.pid})
        self.assertEqual(half.call("status")["pid"], proxy.pid)  # now `client` is idle for the longest
        self.assertEqual(self.client(proxy).call("status")["pid"], proxy.pid)
        self.assertIsNone(client.message())
        self.assertEqual(half.call("status")["pid"], proxy.pid)

    def test_floods_are_answered_in_turn_and_cost_no_memory(self):
        _, proxy = self.road(control=self.path)
        flooding = [self.client(proxy) for _ in range(8)]
        request = b'{"jsonrpc": "2.0", "id": 1, "method": "report"}\n' * 10_000
        for client in flooding:  # until the proxy reads no more of what it could not answer
            client.socket.setblocking(False)
            with contextlib.suppress(BlockingIOError):
                while True:
                    client.socket.send(request)
        before = proxy.resident_kib()
        for number in range(50):
            self.query(proxy, f"good{number}.example")
            self.assertEqual(self.client(proxy).call("status")["pid"], proxy.pid)
        if not IS_SANITIZED:  # a sanitizer keeps what was freed
            self.assertLess(proxy.resident_kib(), before + 8_000)

    def test_watchers_that_read_and_watchers_that_do_not(self):
        upstream, proxy = self.road(control=self.path)
        number = int(20_000 * LOAD)
        watchers = [self.client(proxy) for _ in range(200)]
        for watcher in watchers:
            self.assertIsNone(watcher.call("watch"))
        late, early = ([watcher.socket for watcher in half] for half in (watchers[:100], watchers[100:]))
        told = dict.fromkeys(early, b"")
        load = self.load(proxy, "".join(f"name{query}.example A\n" for query in range(number)), "-n", "1", "-q", "50")
        self.read(told, lambda: not load.is_running())
        self.assertEqual(len(upstream.queries), number)
        told.update(dict.fromkeys(late, b""))
        self.read(told, lambda: all(sum(self.counts(lines)) == number for lines in told.values()))
        self.assertTrue(LOAD < 1 or all(sum(self.counts(told[reader])[1:]) > 0 for reader in late))

    @staticmethod
    def counts(lines):
        """How many queries the whole lines tell of, and then each number of those that were lost."""
        lines = lines[:lines.rfind(b"\n") + 1]
        return [lines.count(b'"method":"query"'), *map(int, re.findall(rb'"lost":(\d+)', lines))]

    @staticmethod
    def read(told, is_over):
        """Adds to each socket's octets what it is told, until then."""
        def read_on():
            for watcher in select.select(list(told), [], [], 0.05)[0]:
                told[watcher] += watcher.recv(1 << 20)
            return is_over()
        poll(read_on, "all are told", 5 * PATIENCE)


class PlaceTest(ControlTest):
    def test_who_is_served(self):
        if os.geteuid() != 0:
            self.skipTest("takes root")
        _, proxy = self.road(control=self.path, prefix=("setpriv", "--regid", "4242", "--clear-groups"))
        self.assertEqual(stat.S_IMODE(os.stat(self.path).st_mode), 0o660)
        os.chmod(self.path, 0o666)  # what keeps others out is not its mode alone
        home = os.getgroups()
        for group, further, is_served in ((4243, [4244], False), (4242, [4244], True), (4243, [1, 2, 4242, 5], True),
                                          (4243, [*range(5000, 5200), 4242], True)):
            os.setgroups(further)
            os.setegid(group)
            os.seteuid(4243)
            try:
                client = self.client(proxy)
            finally:
                os.seteuid(0)
                os.setegid(0)
                os.setgroups(home)
            if is_served:
                self.assertIsNone(client.call("watch"))
            else:
                self.assertEqual(client.message(), TURNED_AWAY)
        self.query(proxy)

    def test_where_it_lies_and_what_is_there_already(self):
        proxy = self.proxy(control=None, environment={"RUNTIME_DIRECTORY": "", "XDG_RUNTIME_DIR": self.folder})
        proxy.socket_path = f"{self.folder}/quillet/dns-proxy.sock"
        self.assertEqual(self.client(proxy).call("status")["pid"], proxy.pid)
        _, first = self.road(control=self.path)
        self.assert_left_alone("it is in use")
        self.assertEqual(self.client(first).call("status")["pid"], first.pid)
        first.child.kill()
        first.wait()
        first.stop = lambda: 0
        self.assertTrue(os.path.exists(self.path))
        self.assertEqual(self.client(second := self.road(control=self.path)[1]).call("status")["pid"], second.pid)
        second.stop()
        self.assertFalse(os.path.exists(self.path))
        with open(self.path, "w", encoding="ascii") as file:
            file.write("precious")
        self.assert_left_alone("it is no socket")
        with open(self.path, encoding="ascii") as file:
            self.assertEqual(file.read(), "precious")
        self.path += "/of/no/folder"
        self.assert_left_alone("Not a directory")

    def assert_left_alone(self, reason):
        """One line says so, and the proxy serves."""
        _, proxy = self.road(control=self.path)
        self.query(proxy)
        proxy.stop()
        self.assertEqual([line.split("] ")[1] for line in proxy.output() if "control" in line],
                         [f"control socket: cannot listen at {self.path}: {reason}"])


def setUpModule():
    namespace.enter()
    namespace.add_address(SYSTEM)
