"""The demo, as a newcomer starts it: what it says, what it keeps, and whom it lets in.

Usage: demo_test.py HEADEND-DEMO FOLDER, the latter with the built programs.
"""

import glob
import os
import pty
import select
import signal
import subprocess
import sys
import tempfile
import time
import unittest

DEMO = sys.argv.pop(1)
PROGRAMS = os.path.abspath(sys.argv.pop(1))
TIMEOUT = 200
GREETING = "Enter 'help' and press return for help\n> "
CANNOT = 77


def environment(**more):
    return {"PATH": PROGRAMS + ":" + os.environ["PATH"], "HOME": "/nonexistent", "TERM": "xterm",
            "LANG": "C.UTF-8", **more}


def stop(process):
    process.kill()
    process.wait(TIMEOUT)


class Demo(unittest.TestCase):
    def setUp(self):
        parent = tempfile.TemporaryDirectory()
        self.addCleanup(parent.cleanup)
        self.folder = os.path.join(parent.name, "demo")

    def options(self):
        return ["--folder=" + self.folder] if self.folder else []

    def run_demo(self, commands, *options, **more):
        return subprocess.run([DEMO, *self.options(), *options], input=commands, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=TIMEOUT,
                              env=environment(**more))

    def start_and_hold(self, **more):
        """A demo whose console waits for commands."""
        demo = subprocess.Popen([DEMO, *([] if more else self.options())], stdin=subprocess.PIPE,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=environment(**more))
        self.addCleanup(demo.stdout.close)
        self.addCleanup(stop, demo)
        self.addCleanup(demo.stdin.close)
        said = b""
        while not said.endswith(GREETING.encode()):
            piece = os.read(demo.stdout.fileno(), 4096)
            self.assertTrue(piece, said)
            said += piece
        return demo

    def test_the_next_start_finds_what_was_committed(self):
        first = self.run_demo("id 5\ncommit\n")
        self.assertEqual((first.returncode, first.stderr), (0, ""))
        self.assertTrue(first.stdout.startswith(GREETING + "Headend id changed to: 5."), first.stdout)
        self.assertIn("Headend was already set to: 5", self.run_demo("id 5\n").stdout)

    def test_fresh_begins_with_a_new_headend(self):
        self.run_demo("id 5\ncommit\n")
        self.assertIn("Headend id changed to: 5.", self.run_demo("id 5\n", "--fresh").stdout)

    def test_fresh_removes_copies_of_edits(self):
        self.leave_edits()
        self.run_demo("", "--fresh")
        self.assertEqual(self.copies(self.folder), [])

    def test_what_was_not_committed_is_gone(self):
        self.run_demo("id 5\n")
        self.assertIn("Headend id changed to: 5.", self.run_demo("id 5\n").stdout)

    def test_the_headend_has_services_to_find(self):
        self.assertIn("Canal Tesmar 1", self.run_demo("findtdt _\n").stdout)

    def test_options_after_two_dashes_are_the_consoles(self):
        self.assertRegex(self.run_demo("", "--", "--version").stdout, r"^\nVersion: \d")

    def test_a_second_one_names_the_first_and_touches_nothing(self):
        first = self.start_and_hold()
        before = os.listdir(self.folder)
        second = self.run_demo("id 7\ncommit\n", "--fresh")
        self.assertEqual((second.returncode, second.stdout), (1, ""))
        self.assertEqual(second.stderr, f"headend-demo: process {first.pid} has the headend in "
                                        f"{self.folder}; nothing was touched\n")
        self.assertEqual(os.listdir(self.folder), before)
        first.stdin.write(b"id 8\ncommit\n")
        first.stdin.close()
        self.assertIn(b"Headend id changed to: 8.", first.stdout.read())
        self.assertEqual(first.wait(TIMEOUT), 0)
        self.assertIn("Headend was already set to: 8", self.run_demo("id 8\n").stdout)

    def leave_edits(self, **more):
        """A demo that is ended with edits pending."""
        demo = self.start_and_hold(**more)
        demo.stdin.write(b"id 9\n")
        demo.stdin.flush()
        said = b""
        while b"changed to: 9" not in said:
            said += os.read(demo.stdout.fileno(), 4096)
        demo.terminate()
        demo.wait(TIMEOUT)

    @staticmethod
    def copies(folder):
        return glob.glob(os.path.join(folder, "**", "lineup-console-*.json"), recursive=True)

    def test_edits_of_a_demo_that_is_ended_stay_in_its_folder(self):
        self.leave_edits()
        self.assertEqual(len(self.copies(self.folder)), 1)

    def test_edits_of_a_demo_that_is_ended_stay_in_a_temporary_folder(self):
        with tempfile.TemporaryDirectory() as temporary:
            self.leave_edits(HEADEND_DEMO_FOLDER="/dev/null/demo", TMPDIR=temporary)
            self.assertRegex(" ".join(self.copies(temporary)), r"/lineup-console/lineup-console-[^/ ]*$")

    def test_it_ends_when_its_terminal_closes(self):
        for _ in range(10):  # the signals of the terminal and of its own meet differently
            child, terminal = pty.fork()
            if child == 0:
                os.execve(DEMO, [DEMO, *self.options()], environment())
            said = b""
            while b"> " not in said:
                said += os.read(terminal, 4096)
            os.write(terminal, b"id 9\n")
            while b"(changes to commit) > " not in said or not self.copies(self.folder):
                said += os.read(terminal, 4096) if select.select([terminal], [], [], 0.05)[0] else b""
            os.close(terminal)
            deadline = time.monotonic() + TIMEOUT
            while os.waitpid(child, os.WNOHANG)[0] == 0:
                if time.monotonic() > deadline:
                    os.kill(child, signal.SIGKILL)
                    self.fail("it goes on")
                time.sleep(0.05)

    def test_a_console_that_ends_by_itself_as_ctrl_c_comes_gives_its_status(self):
        programs = tempfile.mkdtemp(dir=os.path.dirname(self.folder))
        console = os.path.join(programs, "lineup-console")
        with open(console, "w", encoding="utf-8") as file:
            file.write("#!/bin/sh\nkill -INT $PPID; exit 5\n")
        os.chmod(console, 0o755)
        for _ in range(16):  # which comes first is a matter of luck
            demo = self.run_demo("", PATH=programs + ":" + environment()["PATH"])
            self.assertEqual((demo.returncode, demo.stderr), (5, ""))

    def test_a_headend_that_cannot_be_read_is_said_and_kept(self):
        os.mkdir(self.folder)
        state = os.path.join(self.folder, "headend.json")
        with open(state, "w", encoding="utf-8") as file:
            file.write("no headend")
        demo = self.run_demo("id 5\ncommit\n")
        self.assertEqual((demo.returncode, demo.stdout), (1, ""))
        self.assertIn(state, demo.stderr)
        with open(state, encoding="utf-8") as file:
            self.assertEqual(file.read(), "no headend")

    def test_without_a_folder_to_write_to_the_headend_is_temporary(self):
        # Nobody may make a folder below a device.
        self.folder = None
        with tempfile.TemporaryDirectory() as temporary:
            demo = self.run_demo("id 5\ncommit\n", HEADEND_DEMO_FOLDER="/dev/null/demo", TMPDIR=temporary)
            self.assertEqual(os.listdir(temporary), [])
        self.assertEqual(demo.returncode, 0)
        self.assertIn("Headend id changed to: 5.", demo.stdout)
        self.assertRegex(demo.stderr, r"^It is kept in " + temporary + r"/\S+\nuntil the end, as its own folder "
                                      r"is not writable\.\n$")

    def test_without_a_home_the_headend_is_temporary(self):
        self.folder = None
        with tempfile.TemporaryDirectory() as temporary:
            demo = self.run_demo("id 5\ncommit\n", HOME="", XDG_STATE_HOME="", TMPDIR=temporary)
            self.assertEqual(os.listdir(temporary), [])
        self.assertEqual(demo.returncode, 0)
        self.assertIn("It is kept in " + temporary, demo.stderr)

    def test_a_folder_that_cannot_be_used_is_refused(self):
        for folder, reason in (("/dev/null/demo", "cannot write to the folder /dev/null/demo"),
                               ("/etc/demo", "/etc/demo cannot be used: the demo has an /etc of its own")):
            self.folder = folder
            demo = self.run_demo("id 5\ncommit\n")
            self.assertEqual((demo.returncode, demo.stdout, demo.stderr), (1, "", f"headend-demo: {reason}\n"))
            self.assertFalse(os.path.exists(folder))

    def test_a_folder_whose_files_are_no_files_is_refused(self):
        for name in ("lock", "simulator.log"):
            self.folder = tempfile.mkdtemp(dir=os.path.dirname(self.folder))
            os.mkdir(os.path.join(self.folder, name))
            demo = self.run_demo("id 5\ncommit\n")
            self.assertEqual((demo.returncode, demo.stdout, demo.stderr),
                             (1, "", f"headend-demo: cannot write {self.folder}/{name}\n"))

    def test_help_explains_the_options(self):
        said = self.run_demo("", "--help")
        self.assertEqual((said.returncode, said.stderr), (0, ""))
        for option in ("--fresh", "--folder", "--help"):
            self.assertIn(option, said.stdout)
        self.assertFalse(os.path.exists(self.folder))

    def test_an_option_that_it_does_not_know_changes_nothing(self):
        said = self.run_demo("", "--frsh")
        self.assertEqual((said.returncode, said.stdout), (1, ""))
        self.assertEqual(said.stderr, "headend-demo: unexpected argument '--frsh'\n"
                                      "Try 'headend-demo --help' for more information.\n")
        self.assertFalse(os.path.exists(self.folder))

    def test_a_folder_that_is_left_out_is_said(self):
        said = subprocess.run([DEMO, "--folder"], stderr=subprocess.PIPE, text=True, timeout=TIMEOUT,
                              env=environment())
        self.assertEqual((said.returncode, said.stderr), (1, "headend-demo: --folder needs a folder\n"))

    def said_at_a_terminal(self, last):
        """What a demo at a terminal says on standard error, up to the line that ends with `last`."""
        ours, theirs = pty.openpty()
        self.addCleanup(os.close, ours)
        with tempfile.TemporaryFile() as output:
            demo = subprocess.Popen([DEMO, "--folder", self.folder], stdin=theirs, stdout=output, stderr=theirs,
                                    start_new_session=True, env=environment())
            self.addCleanup(stop, demo)
            os.close(theirs)
            os.write(ours, b"quit\n")
            said = b""
            deadline = time.monotonic() + TIMEOUT
            while last.encode() + b"\r\n" not in said:
                self.assertLess(time.monotonic(), deadline, said)
                if select.select([ours], [], [], 0.05)[0]:
                    said += os.read(ours, 4096)
            self.assertEqual(demo.wait(TIMEOUT), 0)
            output.seek(0)
            self.assertNotIn(b"simulated", output.read())
        return said.decode().replace("\r\n", "\n")

    def test_a_person_at_a_terminal_is_welcomed_on_standard_error(self):
        welcome = self.said_at_a_terminal(" leaves.").partition("This headend is simulated")[2]
        self.assertEqual(welcome.count("\n"), 4, welcome)
        for word in (self.folder, "--fresh", "adddvb 1", "quit"):
            self.assertIn(word, welcome)

    def test_copies_of_edits_are_named_without_lineupctl_which_would_not_reach_the_headend(self):
        self.leave_edits()
        said = self.said_at_a_terminal(" sends them at once")
        self.assertIn(f"\"restore {self.copies(self.folder)[0]}\" sends them at once\n", said)


if __name__ == "__main__":
    sandbox = subprocess.run([os.path.join(os.path.dirname(DEMO), "headend-sandbox"), "true"],
                             stderr=subprocess.PIPE, text=True, check=False)
    if sandbox.returncode != 0:
        print(sandbox.stderr)
        sys.exit(CANNOT)
    unittest.main()
