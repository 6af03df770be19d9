"""sandbox/headend-fleet itself: that nothing of it is left, however it ends.

Usage: script_test.py PROJECT
"""

import os
import pty
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

PROJECT = sys.argv.pop(1)
FLEET = os.path.join(PROJECT, "sandbox/headend-fleet")
PATIENCE = 120
CANNOT = 77


def namespaces():
    """The namespaces for processes on this machine that processes are in."""
    found = set()
    for number in filter(str.isdigit, os.listdir("/proc")):
        try:
            found.add(os.readlink(f"/proc/{number}/ns/pid"))
        except OSError:  # it has ended, or is none of ours
            pass
    return found


class Fleet(unittest.TestCase):
    def start(self, **options):
        """Starts a fleet of one headend, and a command there that says which namespaces there are."""
        command = ("sh", "-c", "readlink /proc/self/ns/pid /proc/$(cat headends/1/pid)/ns/pid; echo READY; "
                   "exec sleep 1000")
        fleet = subprocess.Popen([FLEET, "1", *command], stdout=subprocess.PIPE, text=True, **options)
        self.addCleanup(fleet.stdout.close)
        self.addCleanup(fleet.wait)
        self.addCleanup(fleet.kill)
        return fleet

    def read_until_ready(self, fleet):
        """The namespaces that the fleet's processes are in."""
        lines = []
        for line in fleet.stdout:
            if line == "READY\n":
                return lines
            lines.append(line.strip())
        raise AssertionError(lines)

    def expect_gone(self, inside):
        end = time.monotonic() + PATIENCE
        while namespaces() & set(inside):
            self.assertLess(time.monotonic(), end, "processes are left")
            time.sleep(0.05)
        for place in ("/run/fleet", "/sys/class/net/headends"):
            self.assertFalse(os.path.exists(place), place)
        with open("/proc/mounts", encoding="utf-8") as mounts:
            self.assertNotIn("/run/fleet", mounts.read())

    def test_is_gone_however_it_is_ended(self):
        for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGKILL):
            fleet = self.start()
            inside = self.read_until_ready(fleet)
            self.assertEqual(len(set(inside) & namespaces()), 2)
            fleet.send_signal(number)
            self.assertNotEqual(fleet.wait(PATIENCE), 0)
            self.expect_gone(inside)

    def test_ends_with_ctrl_c(self):
        fleet = self.start(start_new_session=True)
        inside = self.read_until_ready(fleet)
        os.killpg(fleet.pid, signal.SIGINT)  # as a terminal does
        self.assertEqual(fleet.wait(PATIENCE), 130)
        self.expect_gone(inside)

    def test_ends_with_the_status_of_its_command_and_gives_it_its_input(self):
        done = subprocess.run([FLEET, "1", "sh", "-c", "cat; exit 7"], input="text", text=True,
                              stdout=subprocess.PIPE, timeout=PATIENCE, check=False)
        self.assertEqual((done.returncode, done.stdout), (7, "text"))

    def test_opens_a_shell_with_job_control_on_a_terminal(self):
        child, terminal = pty.fork()
        if child == 0:
            os.environ["PS1"] = ""
            os.execv(FLEET, [FLEET, "1"])
        said = b""
        os.write(terminal, b"set -o | grep monitor; headend 1 hostname; exit 3\n")
        try:
            while select.select([terminal], [], [], PATIENCE)[0]:
                part = os.read(terminal, 4096)
                if not part:
                    break
                said += part
        except OSError:  # the terminal's other side is closed
            pass
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), 3, said)
        self.assertIn(b"Number of headends: 1.", said)
        self.assertRegex(said, rb"monitor\s+on")
        self.assertIn(b"\r\nheadend1\r\n", said)

    def test_refuses_a_wrong_command_line(self):
        for words in (["-x"], ["0"], ["1001"]):
            done = subprocess.run([FLEET, *words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, timeout=PATIENCE, check=False)
            self.assertEqual((done.returncode, done.stdout), (1, b""), words)

    def test_installs_no_server_where_systemd_would_start_it(self):
        with tempfile.TemporaryDirectory() as project:
            for folder in ("sandbox", "scripts"):
                os.mkdir(os.path.join(project, folder))
            fleet = shutil.copy(FLEET, os.path.join(project, "sandbox/headend-fleet"))
            installer = os.path.join(project, "scripts/install-packages")
            with open(installer, "w", encoding="utf-8") as script:
                script.write('#!/bin/sh\necho "installs $*"; exit 3\n')
            os.chmod(installer, 0o755)
            # A machine without sshd, as this process and its children see it.
            hide = "mount --bind /dev/null /usr/sbin/sshd && mount -t tmpfs none /run && "
            for prepare, result in (
                    ("", (3, "installs openssh-server\n")),
                    ("mkdir -p /run/systemd/system && ",
                     (CANNOT, "sandbox/headend-fleet: no fleet on this machine: openssh-server is not installed, "
                              "and would begin to serve this machine if it were\n"))):
                done = subprocess.run(
                    ["env", "-u", "FLEET_PROGRAMS", "unshare", "--mount", "--propagation", "private",
                     "sh", "-c", hide + prepare + 'exec "$0" 1 true', fleet],
                    stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=PATIENCE, check=False)
                self.assertEqual((done.returncode, done.stdout), result)

    def test_says_where_it_cannot_be(self):
        forbidden = subprocess.run(
            ["setpriv", "--bounding-set", "-sys_admin", "--inh-caps", "-sys_admin", FLEET, "1", "true"],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=PATIENCE, check=False)
        self.assertEqual(forbidden.returncode, CANNOT)
        self.assertIn("no fleet on this machine: namespaces are forbidden", forbidden.stdout)


if __name__ == "__main__":
    if subprocess.run([FLEET, "1", "true"], stdin=subprocess.DEVNULL, check=False).returncode == CANNOT:
        sys.exit(CANNOT)
    unittest.main(verbosity=2)
