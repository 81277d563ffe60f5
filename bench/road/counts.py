"""What one query costs in system calls, allocations and octets of log: counted over two runs of different length, so
that the start is none of it."""

import re
import sys

import loads
from servers import proxy

FEW, MANY = 2_000, 12_000


def per_query(measure):
    return (measure(MANY) - measure(FEW)) / (MANY - FEW)


def system_calls(build, upstream, folder, options):
    def measure(queries):
        summary = folder / "strace"
        server = proxy(build, upstream, folder / "proxy", options, wrapper=("strace", "-f", "-c", "-o", summary))
        run(server, folder, queries)
        return int(re.search(r"^\s*100\.00\s.*?(\d+)(?:\s+\d+)?\s+total$", summary.read_text(), re.MULTILINE)[1])

    return per_query(measure)


def allocations(build, upstream, folder, options):
    library = build / "bench/road/libroad_allocations.so"
    if not library.exists():
        sys.exit(f"road: {library} is not built")

    def measure(queries):
        count = folder / "allocations"
        server = proxy(build, upstream, folder / "proxy", options,
                       environment={"LD_PRELOAD": str(library.resolve()), "QUILLET_ALLOCATIONS": str(count)})
        run(server, folder, queries)
        return int(count.read_text())

    return per_query(measure)


def log_octets(build, upstream, folder, options):
    def measure(queries):
        server = proxy(build, upstream, folder / "proxy", options)
        run(server, folder, queries)
        return server.log_octets()

    return per_query(measure)


def run(server, folder, queries):
    try:
        server.wait_until_it_answers()
        loads.send(server, folder, queries)
    finally:
        server.stop()


def count(build, upstream, folder, options):
    """The relay is there or not, as the caller has it."""
    return {"system calls a query": system_calls(build, upstream, folder, options),
            "allocations a query": allocations(build, upstream, folder, options),
            "log octets a query": log_octets(build, upstream, folder, options)}
