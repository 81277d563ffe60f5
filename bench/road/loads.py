"""The loads, and what is counted of a server under one. dnsperf makes them, but for the one that waits for each answer:
there dnsperf itself pauses."""

import re
import resource
import socket
import statistics
import subprocess
import sys
import time

NAMES = 1000
WARM_UP = 5_000
# What follows the identifier in a query for the A records of "example".
QUESTION = bytes.fromhex("0100 0001 0000 0000 0000 076578616d706c6500 0001 0001")

# How dnsperf makes a load, by its name: its sockets, queries in flight and, for the steady one, its rate.
LOADS = {
    "one socket a query": ("-c", "200", "-q", "100"),
    "ten sockets": ("-c", "10", "-q", "100"),
    "one at a time": None,
    "5,000 a second": ("-c", "200", "-q", "100", "-Q", "5000"),
}


def write_names(folder):
    (folder / "names").write_text("".join(f"h{number}.example A\n" for number in range(NAMES)))


def dnsperf(port, folder, *arguments):
    """Its summary, and the latency of each answer in microseconds."""
    report = folder / "dnsperf"
    with open(report, "wb") as output:
        subprocess.run(["dnsperf", "-s", "127.0.0.1", "-p", str(port), "-d", str(folder / "names"), "-v", *arguments],
                       stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT, check=True)
    latencies, summary = [], {}
    with open(report, encoding="ascii", errors="replace") as lines:
        for line in lines:
            if line.startswith("> NOERROR "):
                latencies.append(float(line.rsplit(None, 1)[1]) * 1e6)
            elif found := re.match(r"\s+Queries (sent|completed|lost|per second):\s+([\d.]+)", line):
                summary[found[1]] = float(found[2])
    report.unlink()
    if len(latencies) != summary["completed"]:
        sys.exit(f"road: {summary['completed']:.0f} answers, {len(latencies)} of them good")
    return summary, latencies


def send(server, folder, queries):
    """So many queries, one socket each; their figures are of no interest."""
    dnsperf(server.port, folder, *LOADS["one socket a query"], "-n", str(max(1, queries // NAMES)))


def one_at_a_time(port, queries):
    """The same as `dnsperf` gives: each query from a socket of its own, once the one before is answered."""
    latencies, begin = [], time.perf_counter()
    for number in range(queries):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
            client.settimeout(5)
            client.connect(("127.0.0.1", port))
            sent = time.perf_counter_ns()
            client.send(number.to_bytes(2, "big") + QUESTION)
            client.recv(4096)
            latencies.append((time.perf_counter_ns() - sent) / 1000)
    return {"completed": queries, "per second": queries / (time.perf_counter() - begin), "lost": 0}, latencies


def burst(server, folder, load, queries):
    """The figures of one load."""
    before = server.cpu_seconds()
    summary, latencies = (one_at_a_time(server.port, queries) if LOADS[load] is None else
                          dnsperf(server.port, folder, *LOADS[load], "-n", str(max(1, queries // NAMES))))
    cuts = statistics.quantiles(latencies, n=100)
    return {"CPU us a query": (server.cpu_seconds() - before) / summary["completed"] * 1e6,
            "median, us": cuts[49], "99th percentile, us": cuts[98], "queries a second": summary["per second"],
            "lost": summary["lost"]}


def fill(server, sockets, queries_each):
    """Leaves queries with a server whose upstream never answers: `queries_each` of each socket."""
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (min(hard, max(soft, sockets + 100)), hard))
    clients = [socket.socket(socket.AF_INET, socket.SOCK_DGRAM) for _ in range(sockets)]
    for client in clients:
        client.connect(("127.0.0.1", server.port))
    for number in range(queries_each):
        for i, client in enumerate(clients):
            identifier = (number * sockets + i) % 65536
            client.send(identifier.to_bytes(2, "big") + QUESTION)
            if i % 50 == 0:
                time.sleep(0.001)  # what the socket's buffer cannot hold would be lost
    time.sleep(1)
    for client in clients:
        client.close()
