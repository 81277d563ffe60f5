"""A network of the test's own, where every port and address is free and /etc/resolv.conf may be replaced."""

import contextlib
import fcntl
import itertools
import os
import shutil
import socket
import struct
import subprocess
import sys

from roadlib.client import tool
from roadlib.processes import family_of

SKIPPED = 77  # the test runner's word for it
INSIDE = "QUILLET_INSIDE_NAMESPACE"

_SET_ADDRESS = 0x8916  # SIOCSIFADDR
_aliases = itertools.count(1)


def enter():
    """Runs the whole program again inside, with loopback up, and there comes back. Ends it as skipped where the
    system permits no such thing."""
    if INSIDE in os.environ:
        _bring_loopback_up()
        return
    namespace = ["unshare", "--net", "--mount", *([] if os.geteuid() == 0 else ["--map-root-user"])]
    if not shutil.which("unshare") or subprocess.run([*namespace, "true"], capture_output=True,
                                                     check=False).returncode != 0:
        print("skipped: no namespaces here")
        sys.exit(SKIPPED)
    os.execvpe("unshare", [*namespace, *sys.orig_argv], {**os.environ, INSIDE: "1"})


def add_address(address):
    """Puts an address of any network on the loopback interface."""
    with socket.socket(family_of(address), socket.SOCK_DGRAM) as s:
        octets = socket.inet_pton(s.family, address)
        if s.family == socket.AF_INET:
            request = struct.pack("16sH2x4s16x", f"lo:{next(_aliases)}".encode(), socket.AF_INET, octets)
        else:
            request = struct.pack("=16sIi", octets, 128, socket.if_nametoindex("lo"))
        fcntl.ioctl(s, _SET_ADDRESS, request)


@contextlib.contextmanager
def resolv_conf(folder, *lines):
    """Within it `lines` are the /etc/resolv.conf, a file in `folder`."""
    path = os.path.join(folder, "resolv.conf")
    with open(path, "w", encoding="ascii") as file:
        file.writelines(f"{line}\n" for line in lines)
    tool("mount", "--bind", path, "/etc/resolv.conf")
    try:
        yield
    finally:
        tool("umount", "/etc/resolv.conf")


def _bring_loopback_up():
    """Without an address beyond the loopback ones the C library would not ask at all."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as s:
        fcntl.ioctl(s, 0x8914, struct.pack("16sH22x", b"lo", 1))  # SIOCSIFFLAGS, IFF_UP
    add_address("192.0.2.1")
    add_address("2001:db8::1")
