"""A network of the test's own, where every port and address is free and /etc/resolv.conf may be replaced."""

import contextlib
import os
import shutil
import subprocess
import sys

from roadlib.processes import tool

SKIPPED = 77  # the test runner's word for it
INSIDE = "QUILLET_INSIDE_NAMESPACE"


def enter():
    """Runs the whole program again inside, with loopback up, and there comes back. Ends it as skipped where the
    system permits no such thing."""
    if INSIDE in os.environ:
        tool("ip", "link", "set", "lo", "up")
        for address in ("192.0.2.1", "2001:db8::1"):  # without any beyond the loopback ones the C library would not ask at all
            add_address(address)
        return
    namespace = ["unshare", "--net", "--mount", *([] if os.geteuid() == 0 else ["--map-root-user"])]
    if not shutil.which("unshare") or subprocess.run([*namespace, "true"], capture_output=True,
                                                     check=False).returncode != 0:
        print("skipped: no namespaces here")
        sys.exit(SKIPPED)
    os.execvpe("unshare", [*namespace, *sys.orig_argv], {**os.environ, INSIDE: "1"})


def add_address(address):
    """Puts an address of any network on the loopback interface; there to be bound when this comes back."""
    tool("ip", "address", "add", address, "dev", "lo", *(["nodad"] if ":" in address else []))


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
