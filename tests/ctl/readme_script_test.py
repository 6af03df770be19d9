"""The README's script, as it stands there but for the folder of the backups and, once, the time-out.

Usage: readme_script_test.py PROJECT PROGRAM-FOLDER, in a headend's place of its own.
"""

import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

PROGRAMS = os.path.abspath(sys.argv.pop(2))
PROJECT = sys.argv.pop(1)
BACKUPS = "/var/lib/lineup-console"
ENVIRONMENT = dict(os.environ, PATH=PROGRAMS + ":" + os.environ["PATH"])


def script():
    with open(os.path.join(PROJECT, "README.md"), encoding="utf-8") as readme:
        return re.search(r"^```sh\n(lineupctl wait.*?)^```$", readme.read(), re.MULTILINE | re.DOTALL).group(1)


class ReadmeScript(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.backups = os.path.join(self.folder, "backups")
        os.mkdir(self.backups)

    def start_simulator(self, *options):
        reading, writing = os.pipe()
        simulator = subprocess.Popen(
            ["headend-simulator", "--in-memory", "--no-catalogue", "--ready-fd", str(writing), *options],
            pass_fds=[writing], stdout=subprocess.PIPE, text=True, env=ENVIRONMENT)
        self.addCleanup(simulator.stdout.close)
        self.addCleanup(simulator.wait)
        self.addCleanup(simulator.terminate)
        os.close(writing)
        with os.fdopen(reading) as ready:
            self.assertEqual(ready.read(), "9190\n")
        return simulator

    def ctl(self, *words):
        return subprocess.run(["lineupctl", *words], cwd=self.folder, env=ENVIRONMENT, check=True,
                              stdout=subprocess.PIPE, text=True).stdout

    def make_site(self):
        """site.json, which is not what runs."""
        site = os.path.join(self.folder, "site.json")
        self.ctl("save", site)
        with open(site, encoding="utf-8") as file:
            config = json.load(file)
        config["2"]["rec"]["1"]["i32"] = 7
        with open(site, "w", encoding="utf-8") as file:
            json.dump(config, file)

    def start_script(self, timeout="--timeout 60", limit="timeout -k 60 600"):
        text = script().replace(BACKUPS, self.backups)
        for ours, theirs in (("--timeout 60", timeout), ("timeout -k 60 600", limit)):
            self.assertIn(ours, text)
            text = text.replace(ours, theirs)
        return subprocess.Popen(["sh", "-c", text], cwd=self.folder, env=ENVIRONMENT, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, text=True)

    def run_script(self, *timeout, **limit):
        script_run = self.start_script(*timeout, **limit)
        out, err = script_run.communicate()
        return script_run.returncode, out, err

    def running_id(self):
        return json.loads(self.ctl("show", "--format=json"))["headendGlobalConfig"]["headendId"]

    def test_is_ten_lines_at_most(self):
        self.assertIn(BACKUPS, script())
        self.assertLessEqual(len(script().splitlines()), 10)

    def test_applies_keeps_and_says_so(self):
        self.start_simulator()
        self.make_site()
        before = self.running_id()
        status, out, err = self.run_script()
        self.assertEqual(status, 0)
        self.assertIn(f"id: {before} -> 7\n", out)
        self.assertTrue(out.endswith("the headend runs site.json\n"), out)
        self.assertEqual(err, "")
        self.assertEqual(self.running_id(), 7)
        kept, = os.listdir(self.backups)
        self.assertIn(f"id: 7 -> {before}\n", subprocess.run(
            ["lineupctl", "diff", os.path.join(self.backups, kept)], env=ENVIRONMENT, check=False,
            stdout=subprocess.PIPE, text=True).stdout)
        self.assertEqual(self.run_script(), (0, "the headend runs site.json\n", ""))

    def test_says_that_the_controller_refused(self):
        self.start_simulator("--refuse", "setHeadendConfig")
        self.make_site()
        before = self.running_id()
        status, out, err = self.run_script()
        self.assertEqual(status, 4)
        self.assertNotIn("runs site.json", out)
        self.assertTrue(err.endswith("\nstatus 4: whether the headend runs site.json has to be looked at\n"), err)
        self.assertEqual(self.running_id(), before)

    def test_does_not_say_that_nothing_was_applied_when_a_signal_ends_lineupctl(self):
        self.start_simulator("--delay", "setHeadendConfig=60")
        self.make_site()
        for limit, ended in (("timeout 3", 124), ("timeout -s KILL 3", 137)):
            status, out, err = self.run_script(limit=limit)
            self.assertEqual(status, ended)
            self.assertNotIn("runs site.json", out)
            said = f"status {ended}: whether the headend runs site.json has to be looked at\n"
            self.assertTrue(err.endswith(said), err)

    def test_ends_with_the_status_of_a_wait_that_ran_out(self):
        status, out, err = self.run_script("--timeout 0.2")
        self.assertEqual((status, out), (1, ""))
        self.assertEqual(err, "lineupctl: 127.0.0.1:9190: no answer within 0.2 s\n")

    def test_says_that_somebody_else_has_changed_it_meanwhile(self):
        # Of the calls, two make the file here; the script waits, looks and reads back, which takes long
        # enough for somebody else.
        simulator = self.start_simulator("--delay", "getHeadendConfig:5=10")
        other = os.path.join(self.folder, "other.json")
        self.ctl("save", other)
        self.make_site()
        script_run = self.start_script()
        while "setHeadendConfig" not in simulator.stdout.readline():
            pass
        subprocess.run(["lineup-console", "--restore", other], env=ENVIRONMENT, check=True,
                       stdout=subprocess.DEVNULL)
        out, err = script_run.communicate()
        self.assertEqual(script_run.returncode, 5, err)
        self.assertIn("id: 7 -> ", out)
        self.assertTrue(err.endswith("somebody else has changed it meanwhile\n"), err)

    def test_says_that_a_file_was_not_applied(self):
        self.start_simulator()
        before = self.running_id()
        status, out, err = self.run_script()
        self.assertEqual(status, 3)
        self.assertEqual(out, "")
        self.assertTrue(err.endswith("site.json was not applied\n"), err)
        self.assertEqual(self.running_id(), before)


if __name__ == "__main__":
    unittest.main(verbosity=2)
