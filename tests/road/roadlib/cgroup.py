"""Cgroups of the test's own, as a desktop makes one for each application."""

import contextlib
import os
import re


def _tree():
    """Where the tree of version 2 is mounted, also beside the older hierarchies."""
    with open("/proc/self/mountinfo", encoding="utf-8") as mounts:
        return next((line.split()[4] for line in mounts if re.search(r" - cgroup2 ", line)), None)


class Cgroup:
    """`path` in a cgroup that no other test has; OSError where none can be made."""

    def __init__(self, path):
        tree = _tree()
        if not tree:
            raise OSError("no tree of cgroups of version 2")
        self._top = os.path.join(tree, f"quillet-road-{os.getpid()}")
        self.path = os.path.join(self._top, path)
        os.makedirs(self.path)

    def enter(self):
        """Moves this process there; for a child of the test before it executes its program."""
        with open(os.path.join(self.path, "cgroup.procs"), "w", encoding="ascii") as file:
            file.write(str(os.getpid()))

    @contextlib.contextmanager
    def inside(self):
        """Within it this process is there, and what sockets it makes belong there."""
        with open("/proc/self/cgroup", encoding="utf-8") as own:
            home = next(line[3:].strip() for line in own if line.startswith("0::"))
        self.enter()
        try:
            yield
        finally:
            with open(f"{_tree()}{home}/cgroup.procs", "w", encoding="ascii") as file:
                file.write(str(os.getpid()))

    def remove(self):
        path = self.path
        with contextlib.suppress(OSError):  # what another one is in stays
            while len(path) >= len(self._top):
                os.rmdir(path)
                path = os.path.dirname(path)
