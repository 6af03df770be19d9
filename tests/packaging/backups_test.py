"""The folder of the backups is there, and the unit that fills it waits for the controller.

Usage: backups_test.py PROJECT
"""

import os
import re
import sys
import unittest

PROJECT = sys.argv.pop(1)
FOLDER = "/var/lib/lineup-console"


def content(name):
    with open(os.path.join(PROJECT, name), encoding="utf-8") as file:
        return file.read()


class Backups(unittest.TestCase):
    def test_have_a_folder_of_their_own_in_the_package(self):
        self.assertIn(FOLDER[1:], content("packaging/debian/lineup-console.dirs").splitlines())
        self.assertIn("chmod 0700 debian/lineup-console" + FOLDER, content("packaging/debian/rules"))

    def test_go_in_the_documents_to_a_folder_that_the_package_brings(self):
        for name in ("README.md", "docs/man/lineupctl.1"):
            named = re.findall(r"apply --backup (\S+)", content(name))
            self.assertEqual(set(named), {FOLDER}, name)

    def test_are_made_by_a_unit_when_the_controller_answers(self):
        unit = content("packaging/debian/lineup-console.lineup-backup.service")
        self.assertEqual(re.findall(r"^(Exec\w+=.*)", unit, re.MULTILINE),
                         ["ExecStartPre=/usr/bin/lineupctl wait --timeout 300",
                          "ExecStart=/usr/bin/lineupctl backup --keep 30 " + FOLDER])


if __name__ == "__main__":
    unittest.main(verbosity=2)
