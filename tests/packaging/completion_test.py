"""Completion of the programs' options, as a person at a bash prompt gets it.

Usage: completion_test.py FOLDER, the one with the completion files.
"""

import os
import pty
import select
import subprocess
import sys
import tempfile
import time
import unittest

FOLDER = os.path.abspath(sys.argv.pop(1))
TIMEOUT = 30

# A key that puts all possible completions into the line, and programs that say what they are given.
SETUP = """\
bind '"\\t": insert-completions'
bind 'set enable-bracketed-paste off'
PS1=
for program in lineup-console lineupctl headend-simulator headend-demo; do
  . "$COMPLETIONS/$program"
  eval "$program() { printf '<%s>' \\"\\$@\\" >>\\"\\$RESULT\\"; }"
done
stty -echo
"""


def completed(line, folder):
    """The arguments that a program gets when Tab is pressed at the end of the line, then Return."""
    result = os.path.join(folder, ".result")
    rc = os.path.join(folder, ".rc")
    for path, text in ((result, ""), (rc, SETUP)):
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
    ours, theirs = pty.openpty()
    shell = subprocess.Popen(
        ["bash", "--noprofile", "--rcfile", rc, "-i"],
        stdin=theirs, stdout=theirs, stderr=theirs, cwd=folder, start_new_session=True,
        env={"PATH": os.environ["PATH"], "TERM": "dumb", "COMPLETIONS": FOLDER, "RESULT": result})
    os.close(theirs)
    os.write(ours, f"{line}\t\nexit\n".encode())
    deadline = time.monotonic() + TIMEOUT
    while shell.poll() is None:
        if time.monotonic() > deadline:
            shell.kill()
            raise TimeoutError(line)
        if select.select([ours], [], [], 0.05)[0]:
            try:
                os.read(ours, 4096)
            except OSError:  # the shell has closed its end
                break
    shell.wait(TIMEOUT)
    os.close(ours)
    with open(result, encoding="utf-8") as file:
        return file.read().strip("<>").split("><")


class Completion(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        for name in ("lineup.json", "with blank.json", "other"):
            with open(os.path.join(self.folder.name, name), "w", encoding="utf-8"):
                pass

    def check(self, line, *arguments):
        self.assertEqual(completed(line, self.folder.name), list(arguments))

    def test_console_options(self):
        self.check("lineup-console ", "--console", "--help", "--level", "--restore", "--save",
                   "--type", "--version")

    def test_console_option_from_its_beginning(self):
        self.check("lineup-console --console --sa", "--console", "--save")

    def test_console_types(self):
        self.check("lineup-console -t ", "-t", "skyit", "standard")
        self.check("lineup-console --type st", "--type", "standard")

    def test_console_type_behind_an_equals_sign(self):
        self.check("lineup-console --type=sk", "--type=skyit")
        self.check("lineup-console --type=", "--type=skyit", "standard")

    def test_console_levels(self):
        self.check("lineup-console --level ", "--level", "3", "4", "5", "6", "7")

    def test_console_file_to_save_to(self):
        self.check("lineup-console --save li", "--save", "lineup.json")
        self.check("lineup-console -s ot", "-s", "other")

    def test_console_file_to_restore(self):
        self.check("lineup-console --restore=li", "--restore=lineup.json")
        self.check("lineup-console -r wi", "-r", "with blank.json")

    def test_console_unknown_word_completes_to_nothing(self):
        self.check("lineup-console --type x", "--type", "x")

    def test_ctl_commands(self):
        self.check("lineupctl ", "--help", "--version", "apply", "backup", "catalogue", "diff",
                   "save", "show", "wait")
        self.check("lineupctl sh", "show")

    def test_ctl_options_of_a_command(self):
        self.check("lineupctl apply --", "apply", "--backup", "--dry-run", "--expect", "--keep",
                   "--patch")
        self.check("lineupctl diff --", "diff", "--format")

    def test_ctl_words_of_an_option(self):
        self.check("lineupctl show --format ", "show", "--format", "csv", "json", "text")
        self.check("lineupctl diff --format=j", "diff", "--format=json")
        self.check("lineupctl show --section sc", "show", "--section", "scan")

    def test_ctl_sources_and_files(self):
        self.check("lineupctl diff run", "diff", "running")
        self.check("lineupctl diff li", "diff", "lineup.json")
        self.check("lineupctl save wi", "save", "with blank.json")
        self.check("lineupctl apply --expect run", "apply", "--expect", "running")
        self.check("lineupctl apply --patch li", "apply", "--patch", "lineup.json")

    def test_simulator_options(self):
        self.check("headend-simulator ", "--break", "--catalogue", "--delay", "--help",
                   "--in-memory", "--keep", "--no-catalogue", "--not-ready", "--port",
                   "--ready-fd", "--refuse", "--replace-catalogue", "--state", "--timestamps",
                   "--version", "--without-input")

    def test_simulator_calls(self):
        self.check("headend-simulator --refuse setH", "--refuse", "setHeadendConfig",
                   "setHeadendGlobalConfig")

    def test_simulator_files(self):
        self.check("headend-simulator --state li", "--state", "lineup.json")
        self.check("headend-simulator --catalogue=ot", "--catalogue=other")

    def test_simulator_inputs(self):
        self.check("headend-simulator --without-input T", "--without-input", "TDT1", "TDT2")

    def test_simulator_number_completes_to_nothing(self):
        self.check("headend-simulator --port ", "--port")

    def test_demo_options(self):
        self.check("headend-demo --f", "--folder", "--fresh")

    def test_demo_folder(self):
        os.mkdir(os.path.join(self.folder.name, "course"))
        self.check("headend-demo --folder ", "--folder", "course")


if __name__ == "__main__":
    unittest.main()
