"""The man pages are well-formed, and they and the completion leave nothing out that the programs
offer.

Usage: man_pages_test.py SOURCE-FOLDER PROGRAM-FOLDER
"""

import os
import re
import shutil
import subprocess
import sys
import unittest

PROGRAMS = os.path.abspath(sys.argv.pop(2))
SOURCES = os.path.abspath(sys.argv.pop(1))
EVERY_PROGRAM = ("lineup-console", "lineupctl", "headend-simulator", "headend-demo")


def page_of(program):
    with open(f"{SOURCES}/docs/man/{program}.1", encoding="utf-8") as file:
        return file.read()


def completion_of(program):
    with open(f"{SOURCES}/packaging/completion/{program}", encoding="utf-8") as file:
        return file.read()


def output_of(*command, given=""):
    """Standard output of a program in a headend's place of its own, where no controller runs."""
    return subprocess.run([f"{SOURCES}/sandbox/headend-sandbox", *command], input=given, check=True,
                          stdout=subprocess.PIPE, text=True).stdout


def options_of(program):
    folder = f"{SOURCES}/sandbox" if program == "headend-demo" else PROGRAMS
    return set(re.findall(r"--([a-z-]+)", output_of(f"{folder}/{program}", "--help")))


def usages():
    """What the help says of each command of lineupctl: the words after it."""
    return dict(re.findall(r"^  ([a-z]+)(.*)", output_of(f"{PROGRAMS}/lineupctl", "--help"), re.MULTILINE))


def options_in(usage):
    return set(re.findall(r"--([a-z-]+)", usage))


class ManPages(unittest.TestCase):
    @unittest.skipUnless(shutil.which("mandoc"), "needs mandoc")
    def test_well_formed(self):
        for program in EVERY_PROGRAM:
            # Which other manuals are installed here is not the page's business.
            lint = subprocess.run(["mandoc", "-Tlint", "-Wstyle", f"docs/man/{program}.1"],
                                  cwd=SOURCES, check=False, stdout=subprocess.PIPE,
                                  env={"PATH": os.environ["PATH"], "MANPATH": "/nonexistent"},
                                  text=True).stdout.splitlines()
            self.assertEqual([line for line in lint if "referenced manual not found" not in line],
                             [])

    def test_every_command_is_explained(self):
        listed = output_of(f"{PROGRAMS}/lineup-console", given="help\n")
        commands = set(re.findall(r"^  ([a-z]+) ", listed, re.MULTILINE))
        self.assertEqual(len(commands), 34)
        explained = set(re.findall(r"^\.It Ic ([a-z]+)", page_of("lineup-console"), re.MULTILINE))
        self.assertEqual(commands - explained, set())

    def test_every_accepted_word_is_explained(self):
        page = re.sub(r"^\.\\\".*|[ ,]+", " ", page_of("lineup-console"))
        with open(f"{SOURCES}/model/settings.h", encoding="utf-8") as file:
            words = re.findall(r'\{"([a-z0-9]+)", ', re.sub(r"kSwitch\[\].*", "", file.read()))  # only shown
        self.assertIn("newzealand", words)
        for word in words:
            if not word.isdigit():
                self.assertRegex(page, rf"\b{word}\b")

    def test_every_command_of_lineupctl_is_explained_and_completed(self):
        self.assertEqual(len(usages()), 7)
        for command in usages():
            self.assertIn(f"\n.It Cm {command}\n", page_of("lineupctl"))
            self.assertIn(f" {command} ", completion_of("lineupctl"))

    @unittest.skipUnless(shutil.which("mandoc"), "needs mandoc")
    def test_each_command_of_lineupctl_has_the_synopsis_that_the_help_has(self):
        page = subprocess.run(["mandoc", "-Tascii", "-O", "width=200", f"{SOURCES}/docs/man/lineupctl.1"],
                              check=True, stdout=subprocess.PIPE, text=True).stdout
        page = re.sub(".\b", "", page).replace(" | ", "|")  # without the bold and underlined letters
        for command, usage in usages().items():
            # Which words are the user's own, the page shows by underlining them, and the help by capitals.
            usage = re.sub(r"\b[A-Z]+\b", lambda word: word[0].lower(), command + usage)
            self.assertIn(f"\n     lineupctl {usage}\n", page)

    def test_each_command_of_lineupctl_takes_the_options_of_its_synopsis_and_no_others(self):
        every = set().union(*map(options_in, usages().values()))
        self.assertIn("patch", every)
        for command, usage in usages().items():
            # None of them is run: an option lacks its value, or --dry-run the operand.
            script = f"for option do {PROGRAMS}/lineupctl {command} --$option 2>&1; done; true"
            said = output_of("sh", "-c", script, "sh", *sorted(every))
            self.assertEqual(len(said.splitlines()), len(every), said)
            refused = set(re.findall(r"there is no option --([a-z-]+)", said))
            self.assertEqual(refused, every - options_in(usage))

    def test_each_command_of_lineupctl_is_completed_with_its_options(self):
        for command, usage in usages().items():
            words = re.search(rf"^ *(?:[a-z |]* )?{command}(?: \|[a-z |]*)?\) echo (--.*) ;;$",
                              completion_of("lineupctl"), re.MULTILINE)
            self.assertEqual(options_in(words[1] if words else ""), options_in(usage), command)

    def test_documents_name_the_folder_that_the_package_brings_for_backups(self):
        with open(f"{SOURCES}/packaging/debian/lineup-console.dirs", encoding="utf-8") as file:
            folder = "/" + file.read().strip()
        with open(f"{SOURCES}/README.md", encoding="utf-8") as file:
            documents = {"README.md": file.read(), "lineupctl.1": page_of("lineupctl")}
        for name, text in documents.items():
            self.assertEqual(set(re.findall(r"apply --backup (\S+)", text)), {folder}, name)

    def test_every_option_is_explained(self):
        for program in EVERY_PROGRAM:
            explained = set(re.findall(r"(?:Fl|,|\|) -([a-z-]+)", page_of(program)))
            self.assertEqual(options_of(program) - explained, set())

    def test_every_option_is_completed(self):
        for program in EVERY_PROGRAM:
            completed = set(re.findall(r"--([a-z-]+)", completion_of(program)))
            self.assertEqual(options_of(program) - completed, set())


if __name__ == "__main__":
    unittest.main()
