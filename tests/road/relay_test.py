"""The relay service from outside: its two ports, its XPC service, what it runs, and the proxy as its client.

Runs in a network of its own, where ports 9898 and 9899 are free; skipped where the system permits no such thing."""

import os
import shutil
import signal
import socket
import subprocess
import unittest

from roadlib import namespace
from roadlib.case import IDENTITY, RoadTest, main
from roadlib.client import Client, ask, tool
from roadlib.processes import Process, Proxy, Relay, poll
from roadlib.wire import query
from roadlib.xpc import XpcClient

PORTS = (9898, 9899)
LOCAL = ("127.0.0.1", "127.0.0.2", "::1", "192.0.2.1", "2001:db8::1")
FLUSH = "-HUP mDNSResponder"
LOOKUP = "+shor public-ip.quillet.example @127.0.0.6"
needs_zsh = unittest.skipUnless(os.path.exists("/bin/zsh"), "no /bin/zsh here")


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

    def held_back(self, name):
        """A program that does nothing, each time until the function returned is called."""
        path = os.path.join(self.programs, f"{name}.gate")
        os.mkfifo(path)
        gate = os.open(path, os.O_RDWR)
        self.addCleanup(os.close, gate)
        self.program(name, f"read line <{path}")
        return lambda: os.write(gate, b"\n")

    def calls(self, name):
        try:
            with open(os.path.join(self.programs, f"{name}.calls"), encoding="utf-8") as file:
                return file.read().splitlines()
        except FileNotFoundError:
            return []

    def relay(self, **how):
        process = Relay(self.folder, self.programs, **how)
        self.addCleanup(self._end, process)
        return process

    def client(self, port=9898, host="127.0.0.1"):
        client = Client((host, port))
        self.addCleanup(client.socket.close)
        return client

    def exchange(self, relay, client, datagram, *expected):
        """Sends a datagram; the records that follow it are the expected ones."""
        before = len(relay.said())
        client.send(datagram)
        poll(lambda: len(relay.said()) >= before + len(expected), f"{expected} after {datagram[:80]}")
        self.assertEqual(relay.said()[before:], list(expected))

    def wait_for_children(self, relay, count):
        poll(lambda: len(relay.children()) == count, f"{count} children")


class StartTest(RelayTest):
    def test_says_what_it_does(self):
        said = self.relay().said()
        for port in PORTS:
            lines = [line for line in said if str(port) in line]
            self.assertEqual(lines, [f"Listener connecting to port {port}...", f"Listener connected to port {port}"])
        self.assertEqual([line for line in said if "***" in line],
                         ["*** XPC and UDP started_ ***", "*** XPC listener resumed ***"])
        self.assertEqual(len(said), 6)

    def test_takes_no_options(self):
        program = os.environ["QUILLET_RELAY"]
        self.assertIn("quillet-relay", tool(program, "--help"))
        self.assertRegex(tool(program, "--version"), r"^quillet-relay \d+\.\d+\.\d+\n$")
        for argument in ("--port", "x"):
            done = subprocess.run([program, argument], capture_output=True, check=False)
            self.assertEqual(done.returncode, 2)

    def test_ends_with_a_signal(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            relay = self.relay()
            relay.send_signal(number)
            self.assertEqual(relay.wait(), 0)
            self.assertFalse(os.path.exists(relay.socket_path))

    def test_a_port_that_is_taken_stays_closed_silently(self):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as holder:
            holder.bind(("127.0.0.1", 9898))
            process = Process([os.environ["QUILLET_RELAY"]], environment={"RUNTIME_DIRECTORY": self.folder})
            self.addCleanup(self._end, process)
            process.wait_for_line("Listener connected to port 9899")
            self.assertFalse(any("9898" in line for line in process.lines))
            self.client(9899).send(b"&*ALhere")
            process.wait_for_line("Agent log: here")


class DatagramTest(RelayTest):
    def test_a_client_and_its_lines(self):
        relay = self.relay()
        for port, host in zip(PORTS, ("127.0.0.1", "::1")):
            before = len(relay.said())
            client = self.client(port, host)
            client.send(b"&*ALfirst")
            relay.wait_for_line("Agent log: first", PORTS.index(port) + 1)
            own = client.socket.getsockname()[1]
            lines = relay.said()[before:]
            result = lines.pop(1)
            self.assertTrue(result.startswith("clearDNSCacheCmd result - "), result)
            name = lines[-2].split(" - ")[1]
            self.assertRegex(name, rf"^\[C\d+ {host}[:.]{own} udp\]$")
            waiting = f"Listener waiting to receive message - {name}"
            self.assertEqual(lines, ["Listener receiving new message", waiting, waiting,
                                     f"Listener ready to receive message - {name}", "Agent log: first"])

    def test_messages(self):
        relay = self.relay()
        client = self.client()
        client.send(b"&*ALbegin")
        relay.wait_for_line("Agent log: begin")
        most = 65_507
        no_command = "Received message is no command, {} bytes"
        cases = (
            (b"&*AL&*AL a&*ALb", "Agent log:  ab"),
            (b"&*ALa\nb\x1b[0m\xff", "Agent log: a\\nb\\x1B[0m\N{REPLACEMENT CHARACTER}"),
            (b"&*AL" + b"x" * (most - 4), "Agent log: " + "x" * (most - 4)),
            (b"&*AL" + b"\xff" * 1000, "Agent log: " + "\N{REPLACEMENT CHARACTER}" * 1000),
            (b'{"cmdType":"notification","payload":"started"}', "got notification from Ext: started"),
            (b'{"z":[{"a":null}],"payload":"\\u00e9\\"\\\\\\n","y":1,"cmdType":"printToLog"}',
             'got printToLog from Ext: é"\\\\n'),
            (b'{"cmdType":"printToLog","payload":"' + b"y" * (most - 37) + b'"}',
             "got printToLog from Ext: " + "y" * (most - 37)),
            (b"&*updateCU&*updateCUbob", "update CU received, message: &*updateCU&*updateCUbob", " CU updated: bob"),
            (b"&*requestCU", "request CU received, cu: bob", "Data was sent to UDP"),
            (b"\0" * 9, no_command.format(9)), (b"[" * most, no_command.format(most)),
            (b"%s%n", no_command.format(4)),
        )
        for datagram, *expected in cases:
            with self.subTest(datagram=datagram[:60]):
                self.exchange(relay, client, datagram, *expected)

    def test_user_value_of_each_port(self):
        self.relay()
        for port in PORTS:
            for host in LOCAL:
                with self.subTest(port=port, host=host):
                    client = self.client(port, host)
                    self.assertEqual(client.ask(b"&*requestCU"), b"" if host == LOCAL[0] else host_before.encode())
                    client.send(b"&*updateCU" + host.encode())
                    self.assertEqual(client.ask(b"&*requestCU"), host.encode())
                    host_before = host

    def test_user_value_too_large_for_a_datagram(self):
        relay = self.relay()
        client = self.client()
        client.send(b"&*updateCU" + b"\xff" * 30_000)
        client.send(b"&*requestCU")
        relay.wait_for_line("ERROR! Error when data (Type: Data) sending. NWError: \\n POSIXErrorCode(rawValue: 90)")
        client.send(b"&*updateCU" + b"z" * 65_000)
        self.assertEqual(client.ask(b"&*requestCU"), b"z" * 65_000)

    def test_the_usual_tools(self):
        relay = self.relay()
        for port in PORTS:
            for host, version in (("127.0.0.1", "4"), ("[::1]", "6")):
                text = f"{port} {version}"
                for number, command in enumerate((
                        f"printf '&*AL{text} by socat' | socat -u - UDP{version}:{host}:{port}",
                        f"printf '&*AL{text} by nc' | nc -u -q 0 -{version} {host.strip('[]')} {port}")):
                    if shutil.which(("socat", "nc")[number]):
                        tool("sh", "-c", command)
                        relay.wait_for_line(f"Agent log: {text} by {('socat', 'nc')[number]}")
        if shutil.which("socat"):
            tool("sh", "-c", "printf '&*updateCUalice' | socat -u - UDP:127.0.0.1:9898")
            self.assertEqual(tool("sh", "-c", "printf '&*requestCU' | socat -T 5 - UDP:127.0.0.1:9898,shut-null"), "alice")


class AssociationTest(RelayTest):
    def test_clients_that_take_turns_lose_nothing(self):
        relay = self.relay()
        clients = [self.client() for _ in range(4)]
        expected = []
        for turn in range(10):
            for number, client in enumerate(clients):
                expected += ["Listener receiving new message", f"Agent log: {turn} {number}"]
                client.send(b"&*AL%d %d" % (turn, number))
        relay.wait_for_line("Agent log: 9 3")
        self.assertEqual([line for line in relay.said() if line in set(expected)], expected)

    def test_no_bytes_end_the_loop_until_the_next_association(self):
        relay = self.relay()
        client = self.client()
        for number in range(3):
            client.send(b"")
            relay.wait_for_line("Error: Received nil Data with context - nil", number + 1)
            client.send(b"&*ALagain %d" % number)
            relay.wait_for_line(f"Agent log: again {number}")
            client = (client, self.client())[number % 2]
        self.assertFalse(any("disconnected" in line for line in relay.said()))

    def test_what_a_datagram_brings_about_comes_before_the_next(self):
        relay = self.relay()
        client = self.client()
        expected = []
        for number in range(50):
            client.send(b"&*requestCU")
            client.send(b"&*AL%d" % number)
            expected += ["request CU received, cu: ", "Data was sent to UDP", f"Agent log: {number}"]
        relay.wait_for_line("Agent log: 49")
        self.assertEqual([line for line in relay.said() if line in set(expected)], expected)

    def test_a_receive_error_ends_the_loop_until_the_next_association(self):
        relay = self.relay()
        go_on = self.held_back("killall")
        for number, host in enumerate(("127.0.0.1", "::1")):
            with Client((host, 9898)) as client:
                client.send(b"&*requestCU")
            go_on()  # the client has gone before the answer comes
            error = "Error: NWError received in receive() - POSIXErrorCode(rawValue: 111): Connection refused"
            if os.path.exists("/bin/zsh"):
                relay.wait_for_line(error, number + 1)
            self.client().send(b"&*ALnext %d" % number)
            go_on()
            relay.wait_for_line(f"Agent log: next {number}")
        self.assertFalse(any("disconnected" in line for line in relay.said()))


@needs_zsh
class FlushTest(RelayTest):
    def test_each_association_flushes_first(self):
        relay = self.relay()
        for number, (script, result) in enumerate((("", ""), ("echo out; echo err >&2", "out\\nerr\\n"),
                                                   ("printf 'a\\377b'; exit 3", "a\N{REPLACEMENT CHARACTER}b"))):
            self.program("killall", script)
            before = len(relay.said())
            self.client().send(b"&*ALx")
            relay.wait_for_line("Agent log: x", number + 1)
            self.assertEqual(relay.said()[before:][:2],
                             ["Listener receiving new message", f"clearDNSCacheCmd result - {result}"])
        self.assertEqual(self.calls("killall"), [FLUSH] * 3)
        self.wait_for_children(relay, 0)

    def test_a_flush_that_hangs_delays_nobody_else(self):
        relay = self.relay()
        self.program("killall", "exec sleep 1000")
        self.client(9898).send(b"&*ALlate")
        poll(lambda: self.calls("killall"), "the flush")
        self.program("killall", "")
        self.client(9899).send(b"&*ALat once")
        relay.wait_for_line("Agent log: at once")
        with XpcClient(relay) as client:
            self.assertIsNone(client.call("printAppLogToFileWithLog:", "x"))
        self.wait_for_children(relay, 1)
        children = relay.children()
        self.assertFalse(any("late" in line for line in relay.said()))
        self.assertEqual(relay.stop(), 0)
        poll(lambda: not os.path.exists(f"/proc/{children[0]}"), "the flush is ended")

    def test_nothing_is_lost_while_it_takes_its_time(self):
        relay = self.relay()
        go_on = self.held_back("killall")
        client = self.client()
        for number in range(500):
            client.send(b"&*AL%d" % number)
        go_on()
        relay.wait_for_line("Agent log: 499")
        self.assertEqual([line for line in relay.said() if line.startswith("Agent log")],
                         [f"Agent log: {number}" for number in range(500)])

    def test_no_descriptor_leaks(self):
        relay = self.relay()
        others = [XpcClient(relay) for _ in range(3)]
        self.program("killall", "exec ls /proc/self/fd")
        self.client().send(b"&*ALx")
        relay.wait_for_line("clearDNSCacheCmd result - 0\\n1\\n2\\n3\\n")  # the last is the folder itself
        for other in others:
            other.close()


class XpcTest(RelayTest):
    def test_methods(self):
        relay = self.relay()
        with XpcClient(relay) as client:
            self.assertIsNone(client.call("sendDNSProxyCommandWithCommand:", "bypassAllOn"))
            self.assertIsNone(client.call("printAppLogToFileWithLog:", "a\nb %s é"))
            for hidden in ("printLogToFileWithLog:", "proxyStateWasUpdatedWithState:",
                           "setAgentCommandListenerWithListener:", "", "getPublicIp"):
                self.assertEqual(client.call(hidden, "x"), -32601)
            for wrong in ((), (1,), ("a", "b"), (None,)):
                self.assertEqual(client.call("printAppLogToFileWithLog:", *wrong), -32602)
            client.send(b"nonsense\n")
            self.assertEqual(client.answer(), {"jsonrpc": "2.0", "id": None,
                                               "error": {"code": -32700, "message": "Parse error"}})
            client.send(b'{"jsonrpc":"2.0","method":"printAppLogToFileWithLog:","params":["quiet"]}\n')
            client.send(b'{"jsonrpc":"2.0","method":"nothing"}\n')
            client.request("printAppLogToFileWithLog:", "last", number="x")
            self.assertEqual(client.answer(), {"jsonrpc": "2.0", "id": "x", "result": None})
        relay.wait_for_line("called: last")
        said = relay.said()[6:]
        self.assertEqual(said, ["attempt to do new connection", "sendDNSProxyCommand called: bypassAllOn",
                                "print app log to file called: a\\nb %s é", "print app log to file called: quiet",
                                "print app log to file called: last"])

    def test_public_address(self):
        relay = self.relay()
        for script, expected in (("echo 192.0.2.7", "192.0.2.7"), ("printf ' \\n 1\\n2 \\t\\n'", "1\n2"), ("exit 9", ""),
                                 ("echo ';; no servers'; exit 9", ";; no servers"), ("printf '\\377'", ""),
                                 ("echo x >&2", ""), ("kill -9 $$", ""), ("head -c 200000 /dev/zero | tr '\\0' y", "y" * 200_000)):
            self.program("dig", script)
            with self.subTest(script=script), XpcClient(relay) as client:
                self.assertEqual(client.call("getPublicIpWithReply:"), expected)
        self.assertEqual(self.calls("dig"), [LOOKUP] * 8)
        self.wait_for_children(relay, 0)

    def test_lookup_that_hangs_delays_nobody_else(self):
        relay = self.relay()
        self.program("dig", "exec sleep 1000")
        with XpcClient(relay) as slow, XpcClient(relay) as other:
            slow.request("getPublicIpWithReply:")
            poll(lambda: self.calls("dig"), "the lookup")
            self.assertIsNone(other.call("printAppLogToFileWithLog:", "x"))
            for port in PORTS:
                self.client(port).send(b"&*AL%d" % port)
                relay.wait_for_line(f"Agent log: {port}")
            self.program("dig", "echo 192.0.2.8")
            self.assertEqual(other.call("getPublicIpWithReply:"), "192.0.2.8")
            self.wait_for_children(relay, 1)
            self.assertEqual(relay.stop(), 0)

    def test_clients_that_behave_badly(self):
        relay = self.relay()
        threads = len(os.listdir(f"/proc/{relay.pid}/task"))
        quiet = [XpcClient(relay) for _ in range(80)]  # more than there is room for
        half = XpcClient(relay)
        half.send(b'{"jsonrpc":"2.0","id":1,"met')
        much = XpcClient(relay)
        much.send(b"x" * 3_000_000)
        gone = XpcClient(relay)
        gone.request("printAppLogToFileWithLog:", "gone")
        gone.close()
        with XpcClient(relay) as client:
            self.assertIsNone(client.call("printAppLogToFileWithLog:", "x"))
        much.send(b"\n")
        self.assertEqual(much.answer()["error"]["code"], -32700)
        self.assertIsNone(much.call("printAppLogToFileWithLog:", "and on"))
        half.send(b'hod":"printAppLogToFileWithLog:","params":["whole"]}\n')
        self.assertIsNone(half.answer()["result"])
        for client in (*quiet, half, much):
            client.close()
        poll(lambda: len(os.listdir(f"/proc/{relay.pid}/task")) == threads, "threads of clients have ended")

    def test_socket_file(self):
        relay = Relay(self.folder, self.programs)  # killed below: it does not end well
        self.addCleanup(relay.stop)
        second = Process([os.environ["QUILLET_RELAY"]], environment={"RUNTIME_DIRECTORY": self.folder})
        self.addCleanup(self._end, second)
        second.wait_for_line(f"cannot listen at {relay.socket_path}: it is in use")
        second.stop()
        with XpcClient(relay) as client:
            self.assertIsNone(client.call("printAppLogToFileWithLog:", "x"))
        relay.send_signal(signal.SIGKILL)
        relay.wait()
        self.assertTrue(os.path.exists(relay.socket_path))
        with XpcClient(self.relay()) as client:
            self.assertIsNone(client.call("printAppLogToFileWithLog:", "x"))


class ProxyTest(RelayTest):
    def test_the_proxy_as_a_client(self):
        relay = self.relay()
        upstream = self.upstream()
        proxy = self.proxy({"filteringDNS": upstream.address, **IDENTITY})
        relay.wait_for_line("got notification from Ext: started")
        ask(proxy.endpoint, query("example.com"))
        relay.wait_for_line("got printToLog from Ext: readDatagrams hash = ")
        with XpcClient(relay) as client:
            client.call("sendDNSProxyCommandWithCommand:", "bypassAllOn")
        self.assertEqual(proxy.stop(), 0)
        relay.wait_for_line("got notification from Ext: stopped")
        self.assertFalse(any("Received command" in line for line in proxy.output()))  # it passes nothing on


if __name__ == "__main__":
    namespace.enter()
    main()
