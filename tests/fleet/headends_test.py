"""Five headends under one playbook: what is changed, what is said, and what is left of faults.

Run by sandbox/headend-fleet 5.
"""

import glob
import os
import re
import signal
import subprocess
import unittest

from headends import calls, config, headend, kill, processes, run, wait_until

ALL = (1, 2, 3, 4, 5)
PROJECT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../..")
BACKUPS = "/var/lib/lineup-console"


def play(*options):
    """Runs the playbook. Returns its status, what it says, and its recap: counts by headend."""
    done = run("ansible-playbook", *options, "site.yml")
    recap = {}
    for number, counts in re.findall(r"^headend(\d+) +: (.*)$", done.stdout, re.MULTILINE):
        recap[int(number)] = dict((word, int(count)) for word, count in re.findall(r"(\w+)=(\d+)", counts))
    return done.returncode, done.stdout, recap


def changed(recap):
    return sorted(number for number, counts in recap.items() if counts["changed"])


def name(number):
    return config(number)["headendGlobalConfig"]["headendName"]


def drift(number, *lines):
    """Somebody changes a headend at its console."""
    headend(number, "lineup-console", stdin="\n".join(lines + ("commit", "quit", "")))


def package_file():
    """The console's package for this machine, if packaging/package has made it, or None."""
    machine = run("dpkg", "--print-architecture").stdout.strip()
    pattern = os.path.join(PROJECT, f"build/packages/lineup-console_*_{machine}.deb")
    for path in sorted(glob.glob(pattern)):
        held = subprocess.run(["dpkg-deb", "--contents", path], stdout=subprocess.PIPE, text=True, check=True)
        if "/usr/bin/lineupctl" in held.stdout:
            return path
    return None


class Headends(unittest.TestCase):
    def setUp(self):
        for number in ALL:
            headend(number, "off")
            headend(number, "on")
            headend(number, "sh", "-c", ": >/var/log/headend-simulator.log")
        self.heal()

    def heal(self):
        status, said, recap = play()
        self.assertEqual(status, 0, said)
        self.expect_healthy()
        return changed(recap)

    def expect_healthy(self, *but):
        for number in ALL:
            if number not in but:
                self.assertEqual(name(number), f"Site {number}")

    def expect_failed(self, said, number, *parts):
        line = re.search(rf"^fatal: \[headend{number}\]: .*$", said, re.MULTILINE)
        self.assertTrue(line, said)
        for part in parts:
            self.assertIn(part, line.group(0))

    def test_are_all_changed_by_the_first_run_and_none_by_the_second(self):
        for number in ALL:
            headend(number, "rm", "-r", BACKUPS)
            drift(number, "id 1", "rfnum 4")
        status, said, recap = play()
        self.assertEqual((status, changed(recap)), (0, list(ALL)), said)
        self.expect_healthy()
        for number in ALL:
            record = config(number)
            self.assertEqual(record["headendGlobalConfig"]["headendId"], number + 1)
            self.assertEqual(len(record["lineupConfig"]["rfEntries"]), 3)
            # What the timer keeps is another matter.
            headend(number, "lineupctl", "backup", "--keep", "1", BACKUPS)
            self.assertEqual(len(headend(number, "ls", BACKUPS + "/before-changes").split()), 1)
            self.assertEqual(len(headend(number, "sh", "-c", f"ls {BACKUPS}/lineup-*").split()), 1)
        before = [len(calls(number)) for number in ALL]
        status, said, recap = play()
        self.assertEqual((status, changed(recap)), (0, []), said)
        self.assertEqual([calls(number)[count:] for number, count in zip(ALL, before)],
                         [["getHeadendConfig"]] * len(ALL))

    def test_get_the_package_and_its_timer_from_the_role(self):
        package = package_file()
        if package is None:
            self.skipTest("packaging/package has made no package")
        headend(5, "umount", "/usr/local/bin/lineupctl")
        headend(5, "rm", "/usr/local/bin/lineupctl")
        # As the guide has it before the first check.
        installed = run("ansible", "headend5", "-m", "include_role", "-a",
                        "name=lineup.console.lineup tasks_from=package", "-e", "lineup_package_file=" + package)
        self.assertEqual(installed.returncode, 0, installed.stdout)
        self.assertIn("install ok installed", headend(5, "dpkg", "--status", "lineup-console"))
        # Where systemd does not run, the timer is enabled for its next start.
        with open("role.yml", "w", encoding="utf-8") as playbook:
            playbook.write("""
- hosts: headend5
  gather_facts: false
  environment: {SYSTEMD_OFFLINE: "1"}
  roles: [lineup.console.lineup]
""")
        command = ["ansible-playbook", "-e", "lineup_backup_timer=true", "-e", "lineup_package_file=" + package,
                   "role.yml"]
        for mode in (["--check"], []):
            first = run(*command, *mode)
            self.assertEqual(first.returncode, 0, first.stdout)
        headend(5, "test", "-L", "/etc/systemd/system/timers.target.wants/lineup-backup.timer")
        again = run(*command)
        self.assertRegex(again.stdout, r"headend5 .* changed=0 .* failed=0 ")

    def test_are_told_which_variables_name_the_package(self):
        said = run("ansible", "headend1", "-m", "include_role", "-a", "name=lineup.console.lineup tasks_from=package")
        self.assertNotEqual(said.returncode, 0)
        self.assertIn("lineup_package_file or lineup_package has to name what is to be installed", said.stdout)

    def test_have_no_timer_if_the_command_line_says_so(self):
        # There a value is a text; without systemd the task would fail.
        status, said, recap = play("--limit", "headend1", "-e", "lineup_backup_timer=false")
        self.assertEqual((status, recap[1]["skipped"]), (0, 2), said)

    def test_show_a_drift_and_nothing_else(self):
        drift(3, "id 9", "rfnum 4")
        status, said, recap = play("--check", "--diff")
        self.assertEqual((status, changed(recap)), (0, [3]), said)
        self.assertIn("\nid: 9 -> 4\nrfnum: 4 -> 6\nchanged: [headend3]\n", said)
        self.assertEqual(said.count(" -> "), 2)
        self.assertEqual(config(3)["headendGlobalConfig"]["headendId"], 9)  # as it is a check
        self.assertEqual(self.heal(), [3])

    def test_that_fail_are_reported_for_what_they_are_and_stop_no_others(self):
        for number in ALL:
            drift(number, "rfnum 4")
        headend(1, "off")
        headend(2, "off")
        headend(2, "on", "--refuse", "setHeadendConfig")
        folder = BACKUPS + "/before-changes"
        headend(3, "mkdir", "-p", folder)
        headend(3, "mount", "-t", "tmpfs", "-o", "size=4k,mode=700", "tmpfs", folder)
        headend(3, "sh", "-c", f"head -c 4096 /dev/zero >{folder}/full")
        status, said, recap = play()
        self.assertNotEqual(status, 0)
        self.expect_failed(said, 1, "UNREACHABLE!", "ssh")
        self.expect_failed(said, 2, '"reason": "controller"', "the controller is not ready: refused")
        self.expect_failed(said, 3, '"reason": "file"', "No space left on device")
        self.assertEqual([number for number in ALL if recap[number]["failed"]], [2, 3])
        self.assertEqual([number for number in ALL if recap[number]["unreachable"]], [1])
        self.assertEqual(changed(recap), [4, 5])
        headend(1, "on")
        headend(2, "off")
        headend(2, "on")
        headend(3, "umount", folder)
        self.assertEqual(self.heal(), [1, 2, 3])
        self.assertEqual(changed(play()[2]), [])

    def test_with_a_full_disk_are_not_taken_for_unreachable_without_pipelining(self):
        drift(3, "rfnum 4")
        folder = "/root/.ansible/tmp"
        headend(3, "mkdir", "-p", folder)
        headend(3, "mount", "-t", "tmpfs", "-o", "nr_inodes=1,mode=700", "tmpfs", folder)
        done = run("env", "ANSIBLE_PIPELINING=false", "ansible-playbook", "--limit", "headend3", "site.yml")
        headend(3, "umount", folder)
        self.assertEqual(done.returncode, 2, done.stdout)
        self.expect_failed(done.stdout, 3, "FAILED!", '"reason": "file"', "No space left on device")

    def test_do_what_the_guide_says_of_them(self):
        with open(os.path.join(PROJECT, "docs/fleet.md"), encoding="utf-8") as guide:
            commands = re.search("## Trying it.*?^```sh\n(.*?)^```", guide.read(), re.DOTALL | re.MULTILINE).group(1)
        for number in ALL:
            drift(number, "rfnum 4")
        said = [run("bash", "-c", command).stdout for command in commands.splitlines()]
        plays = [text for text in said if "PLAY RECAP" in text]
        for text, found in zip(plays, (list(ALL), [], [3, 5], [3])):
            self.assertEqual([number for number in ALL if re.search(rf"(?m)^changed: \[headend{number}\]", text)],
                             found, text)
        self.assertIn("\nid: 9 -> 4\nchanged: [headend3]\n", plays[2])
        self.assertIn("\nid: 9 -> 6\nchanged: [headend5]\n", plays[2])
        self.expect_failed(plays[3], 4, "UNREACHABLE!", "ssh")
        self.expect_failed(plays[3], 5, '"reason": "controller"', "refused")
        self.assertEqual(name(3), "Site 3")

    def test_have_the_old_or_the_new_configuration_when_a_run_is_killed(self):
        drift(1, "rfnum 4", "country italy")
        with open("other.json", "w", encoding="utf-8") as other:
            headend(1, "lineupctl", "save", "/root/other.json")
            other.write(headend(1, "cat", "/root/other.json"))
        self.heal()
        old = [config(number) for number in ALL]
        for number in (2, 3, 4, 5):
            headend(number, "off")
            headend(number, "on", "--delay", "setHeadendConfig=600")
        before = calls(1).count("setHeadendConfig")
        # Two at a time: the first is done, two others send until they are given up, and the last has not
        # begun.
        command = ["ansible-playbook", "--forks", "2", "-e", "lineup_file=other.json", "site.yml"]
        with subprocess.Popen(command, stdout=subprocess.DEVNULL, start_new_session=True) as playbook:
            wait_until(lambda: calls(1).count("setHeadendConfig") > before and processes("lineupctl"))
            os.killpg(playbook.pid, signal.SIGKILL)
        kill("lineupctl")
        wait_until(lambda: not processes("lineupctl"))
        for number in (2, 3, 4, 5):
            headend(number, "off")
            headend(number, "on")
        found = [config(number) for number in ALL]
        status, said, _ = play("-e", "lineup_file=other.json")
        self.assertEqual(status, 0, said)
        new = [config(number) for number in ALL]
        self.assertEqual(found[0], new[0])
        self.assertEqual(found[4], old[4])
        for number in ALL:
            self.assertNotEqual(old[number - 1], new[number - 1])
            self.assertIn(found[number - 1], (old[number - 1], new[number - 1]))


if __name__ == "__main__":
    unittest.main(verbosity=2)
