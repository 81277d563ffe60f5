"""The relay service from outside: its two ports, its XPC service, what it runs, and the proxy as its client."""

import os
import signal

from roadlib import namespace
from roadlib.case import IDENTITY, RoadTest
from roadlib.client import Client
from roadlib.processes import Process, Relay, poll, run
from roadlib.xpc import XpcClient

PORTS = (9898, 9899)
LOG = "printAppLogToFileWithLog:"
LOOKUP = "getPublicIpWithReply:"
COMMAND = "sendDNSProxyCommandWithCommand:"


class RelayTest(RoadTest):
    def setUp(self):
        super().setUp()
        self.programs = os.path.join(self.folder, "programs")
        os.mkdir(self.programs)
        self.program("killall", "")

    def program(self, name, script):
        """A program that notes its arguments and then does as `script` says."""
        path = os.path.join(self.programs, name)
        with open(path + ".new", "w", encoding="utf-8") as file:
            file.write(f'#!/bin/sh\necho "$*" >>{path}.calls\n{script}\n')
        os.chmod(path + ".new", 0o755)
        os.rename(path + ".new", path)

    def calls(self, name):
        return run("cat", f"{self.programs}/{name}.calls").stdout.splitlines()

    def relay(self, *arguments):
        """Its shell is one that every machine has."""
        return self.started(Relay(self.folder, self.programs, arguments or ("--shell", "/bin/sh")))

    def client(self, port=9898, host="127.0.0.1"):
        return self.enterContext(Client((host, port)))


class StartTest(RelayTest):
    def test_says_what_it_does_and_ends_with_a_signal(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            relay = self.relay()
            connecting = [f"Listener {state} port {port}" for port in PORTS
                          for state in ("connecting to", "connected to")]
            self.assertEqual(sorted(relay.said()), ["*** XPC and UDP started_ ***", "*** XPC listener resumed ***",
                                                    *sorted(line + "..." * ("ing" in line) for line in connecting)])
            relay.send_signal(signal.SIGHUP)  # does nothing
            with XpcClient(relay) as client:
                self.assertIsNone(client.call(LOG, "still there"))
            relay.send_signal(number)
            self.assertEqual(relay.wait(), 0)
            self.assertFalse(os.path.exists(relay.socket_path))

    def test_what_it_runs_is_settled_at_the_start(self):
        self.program("dig", "echo 192.0.2.9")
        lookup = ("--public-ip-name", "ip.example", "--public-ip-resolver", "192.0.2.53")
        missing = "the DNS cache will not be flushed: /no/shell: No such file or directory"
        cannot = "clearDNSCacheCmd result - cannot start /no/shell: No such file or directory"
        for arguments, lines in ((("--shell", "/bin/sh", "--flush-command", "echo flushed"),
                                  ["clearDNSCacheCmd result - flushed\\n"]),
                                 (("--shell", "/no/shell"), [missing, cannot]),
                                 (("--shell", "/no/shell", "--flush-command", ""), []), (("--flush-command=",), [])):
            relay = self.relay(*arguments, *lookup)
            self.client().send(b"&*ALx")
            relay.wait_for_line("Agent log: x")
            with self.subTest(arguments=arguments), XpcClient(relay) as client:
                self.assertEqual([line for line in relay.said() if "flushed" in line or "clear" in line], lines)
                self.assertEqual(client.call(LOOKUP), "192.0.2.9")
            relay.stop()
        self.assertEqual(self.calls("dig"), ["+shor ip.example @192.0.2.53"] * 4)

    def test_a_port_that_is_taken_stays_closed_silently(self):
        self.upstream(port=9898)
        process = self.started(Process([os.environ["QUILLET_RELAY"]], environment={"RUNTIME_DIRECTORY": self.folder}))
        process.wait_for_line("Listener connected to port 9899")
        self.assertFalse(any("9898" in line for line in process.lines))


class DatagramTest(RelayTest):
    def test_a_client_and_its_lines(self):
        self.program("killall", "echo out; printf 'err\\377' >&2; exit 3")
        relay = self.relay()
        for number, (port, host) in enumerate(zip(PORTS, ("127.0.0.1", "::1")), 1):
            before = len(relay.said())
            client = self.client(port, host)
            client.send(b"&*ALfirst")
            relay.wait_for_line("Agent log: first", number)
            lines = relay.said()[before:]
            name = lines[-2].split(" - ")[1]
            self.assertRegex(name, rf"^\[C\d+ {host}[:.]{client.socket.getsockname()[1]} udp\]$")
            waiting = f"Listener waiting to receive message - {name}"
            self.assertEqual(lines, [
                "Listener receiving new message", "clearDNSCacheCmd result - out\\nerr\N{REPLACEMENT CHARACTER}",
                waiting, waiting, f"Listener ready to receive message - {name}", "Agent log: first"])
            self.assertEqual(client.ask(b"&*requestCU"), b"")  # each port has a value of its own
            client.send(b"&*updateCU" + b"x" * 60_000)
            self.assertEqual(client.ask(b"&*requestCU"), b"x" * 60_000)
            relay.wait_for_line("Data was sent to UDP", 2 * number)
        self.assertEqual(self.calls("killall"), ["-HUP mDNSResponder"] * 2)
        poll(lambda: not relay.children(), "no zombies")

    def test_a_flush_that_hangs_delays_nobody_else_and_nothing_is_lost(self):
        relay = self.relay()
        gate = os.path.join(self.programs, "gate")
        os.mkfifo(gate)
        self.program("killall", f"read line <{gate}")
        client = self.client()
        for number in range(500):
            client.send(b"&*AL%d" % number)
        poll(lambda: self.calls("killall"), "the flush")
        self.program("killall", "")
        self.client(9899).send(b"&*ALat once")
        relay.wait_for_line("Agent log: at once")
        with open(gate, "w", encoding="ascii") as flushing:
            flushing.write("\n")
        relay.wait_for_line("Agent log: 499")
        self.assertEqual([line for line in relay.said() if line.startswith("Agent log")],
                         ["Agent log: at once", *(f"Agent log: {number}" for number in range(500))])


class XpcTest(RelayTest):
    def test_methods(self):
        relay = self.relay()
        with XpcClient(relay) as client:
            self.assertIsNone(client.call(COMMAND, "bypassAllOn"))
            for hidden in ("printLogToFileWithLog:", "proxyStateWasUpdatedWithState:",
                           "setAgentCommandListenerWithListener:"):
                self.assertEqual(client.call(hidden, "x"), -32601)
            self.assertIsNone(client.call(LOG, "a\nb %s é"))
        relay.wait_for_line("called: a")
        self.assertEqual(relay.said()[6:],
                         ["attempt to do new connection", "sendDNSProxyCommand called: bypassAllOn",
                          "print app log to file called: a\\nb %s é"])

    def test_public_address(self):
        relay = self.relay()
        rows = (("printf ' \\n 1\\n2 \\t\\n'", "1\n2"), ("echo ';; no servers'; exit 9", ";; no servers"),
                ("printf '\\377'", ""), ("echo x >&2", ""), ("kill -9 $$", ""),
                ("head -c 200000 /dev/zero | tr '\\0' y", "y" * 200_000))
        for script, expected in rows:
            self.program("dig", script)
            with self.subTest(script=script), XpcClient(relay) as client:
                self.assertEqual(client.call(LOOKUP), expected)
        self.assertEqual(self.calls("dig"), ["+shor public-ip.quillet.example @127.0.0.6"] * len(rows))
        poll(lambda: not relay.children(), "no zombies")

    def test_lookups_that_hang_delay_nobody_else_and_leave_room(self):
        relay = self.relay()
        self.program("dig", "echo 192.0.2.8")
        with XpcClient(relay) as client:
            self.assertEqual(client.call(LOOKUP), "192.0.2.8")
        self.program("dig", "exec sleep 1000")
        for _ in range(70):
            with XpcClient(relay) as client:
                client.request(LOOKUP)
        poll(lambda: len(relay.children()) == 32, "as many lookups as may run")
        children = relay.children()
        for port in PORTS:
            self.client(port).send(b"&*AL%d" % port)
            relay.wait_for_line(f"Agent log: {port}")
        with XpcClient(relay) as client:
            self.assertEqual(client.call(LOOKUP), "")
            self.assertIsNone(client.call(LOG, "x"))
        self.assertEqual(relay.stop(), 0)
        poll(lambda: not any(os.path.exists(f"/proc/{child}") for child in children), "the lookups are ended")


class ProxyTest(RelayTest):
    def test_the_proxy_as_a_client(self):
        relay = self.relay()
        proxy = self.proxy({"filteringDNS": self.upstream().address, **IDENTITY})
        relay.wait_for_line("got notification from Ext: started")
        self.query(proxy)
        relay.wait_for_line("got printToLog from Ext: readDatagrams hash = ")
        with XpcClient(relay) as client:
            client.call(COMMAND, "bypassAllOn")
        proxy.stop()
        relay.wait_for_line("got notification from Ext: stopped")
        output = proxy.output()
        self.assertEqual(output.count("Xpc Udp This is stateUpdateHandler:"), 4)
        self.assertEqual([line.split("] ", 1)[1] for line in output if "] " in line][-3:], [
            "*Xpc Udp Data was sent to UDP*", "*Xpc Udp Data was sent to UDP*", "Xpc Udp State: Cancelled\\n"])
        self.assertFalse(any("Received command" in line for line in output))  # it passes nothing on


setUpModule = namespace.enter
