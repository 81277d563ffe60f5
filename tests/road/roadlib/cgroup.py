"""Cgroups of the test's own, as a desktop makes one for each application."""

import contextlib
import os
import sys

from roadlib.namespace import SKIPPED


class Cgroup:
    """`path` in a cgroup that no other test has; OSError where none can be made."""

    def __init__(self, path):
        with open("/proc/self/mountinfo", encoding="utf-8") as mounts:
            self._tree = next((line.split()[4] for line in mounts if " - cgroup2 " in line), "/none")
        self._path = f"{self._tree}/quillet-road-{os.getpid()}/{path}"
        os.makedirs(self._path)

    @contextlib.contextmanager
    def inside(self):
        """Within it this process is there, and what sockets it makes belong there."""
        with open("/proc/self/cgroup", encoding="utf-8") as own:
            home = next(line[3:].strip() for line in own if line.startswith("0::"))
        self._enter(self._path)
        try:
            yield
        finally:
            self._enter(self._tree + home)

    def _enter(self, path):
        with open(f"{path}/cgroup.procs", "w", encoding="ascii") as file:
            file.write(str(os.getpid()))

    def remove(self):
        os.removedirs(self._path)  # what another one is in stays


def require():
    """Ends the program as skipped where none can be made."""
    try:
        Cgroup("probe").remove()
    except OSError as error:
        print(f"skipped: {error}")
        sys.exit(SKIPPED)
