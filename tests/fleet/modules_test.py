"""The modules on one headend, over ssh: what they change, what they say, and what they leave behind.

Run by sandbox/headend-fleet 1.
"""

import json
import os
import subprocess
import unittest

from headends import (LINEUP, calls, config, headend, kill, module, module_command, own, processes, run,
                      wait_until)

ID = "/headendGlobalConfig/headendId"
BACKUPS = "/var/lib/lineup-console"


def running_id():
    return config(1)["headendGlobalConfig"]["headendId"]


def leftovers():
    """Ansible's temporary files that are left on the headend."""
    return headend(1, "find", "/root", "/tmp", "-type", "f", "-path", "*ansible*").split()


def apply(number, *options):
    """Arguments of lineup_config for one lineup and this id."""
    return dict({"src": LINEUP, "patch": own(ID, number)}, **dict(options))


class OnAHeadend(unittest.TestCase):
    def setUp(self):
        headend(1, "off")
        headend(1, "on")
        headend(1, "mkdir", "-p", BACKUPS)
        headend(1, "sh", "-c", ": >/var/log/headend-simulator.log; rm -f " + BACKUPS + "/*")

    def restart(self, *options):
        headend(1, "off")
        headend(1, "on", *options)

    def start_from(self, number):
        """Has the headend run the lineup with this id."""
        self.assertFalse(module("lineup_config", apply(number))["failed"])

    def expect_failure(self, result, reason, rc, *parts):
        self.assertTrue(result["failed"], result)
        self.assertEqual((result["reason"], result["rc"]), (reason, rc), result)
        for part in parts:
            self.assertIn(part, result["msg"])
        self.assertEqual(leftovers(), [])


class LineupConfig(OnAHeadend):
    def test_changes_only_what_differs(self):
        self.start_from(3)
        self.assertEqual(running_id(), 3)
        before = len(calls(1))
        again = module("lineup_config", apply(3))
        self.assertEqual((again["failed"], again["changed"], again["difference"]), (False, False, []))
        self.assertEqual(calls(1)[before:], ["getHeadendConfig"])
        other = module("lineup_config", apply(4))
        self.assertEqual((other["changed"], other["difference"]), (True, ["id: 3 -> 4"]))
        self.assertEqual(running_id(), 4)
        self.assertEqual(leftovers(), [])

    def test_sends_nothing_in_check_mode_and_shows_the_difference(self):
        self.start_from(3)
        before = len(calls(1))
        result = module("lineup_config", apply(5, ("backup", True)), "--check", "--diff")
        self.assertEqual((result["failed"], result["changed"]), (False, True))
        self.assertEqual(result["difference"], ["id: 3 -> 5"])
        self.assertTrue(result["printed"].startswith("id: 3 -> 5\n"), result["printed"])
        self.assertNotIn("backup_file", result)
        self.assertEqual(calls(1)[before:], ["getHeadendConfig"])
        self.assertEqual(headend(1, "ls", BACKUPS), "")
        self.assertFalse(module("lineup_config", apply(3), "--check", "--diff")["changed"])

    def test_keeps_what_ran(self):
        self.start_from(3)
        result = module("lineup_config", apply(4, ("backup", True), ("backup_keep", 1)))
        self.assertEqual(result["difference"], ["id: 3 -> 4"])
        kept = result["backup_file"]
        self.assertEqual(headend(1, "lineupctl", "diff", kept, kept), "")
        held = json.loads(headend(1, "lineupctl", "show", "--format", "json", kept))
        self.assertEqual(held["headendGlobalConfig"]["headendId"], 3)
        # The newest backup may hold what runs already.
        module("lineup_config", apply(3))
        again = module("lineup_config", apply(5, ("backup", True), ("backup_keep", 1)))
        self.assertEqual(again["backup_file"], kept)
        self.assertEqual(headend(1, "ls", BACKUPS), os.path.basename(kept) + "\n")

    def test_names_the_newest_backup_also_where_the_clock_was_ahead(self):
        headend(1, "touch", BACKUPS + "/lineup-29990101T000000.000Z.json")
        self.start_from(3)
        for number in (4, 5):  # 3 is kept before the first, and is there already before the second
            result = module("lineup_config", apply(number, ("backup", True), ("backup_keep", 2)))
            self.assertEqual(result["backup_file"], BACKUPS + "/lineup-29990101T000000.001Z.json")
            self.start_from(3)

    def test_takes_words_of_lineupctl_for_files(self):
        # Their folder is the one that ssh comes to, /root.
        headend(1, "mkdir", "-p", "/root/copies")
        for name in ("running", "-"):
            self.start_from(3)
            headend(1, "lineupctl", "save", "/root/" + name)
            self.start_from(4)
            result = module("lineup_config", {"src": name, "remote_src": True, "backup": True, "backup_dir": "copies"})
            self.assertEqual((result["failed"], result.get("difference")), (False, ["id: 4 -> 3"]), result)
            self.assertTrue(result["backup_file"].startswith("./copies/lineup-"), result)
            unexpected = module("lineup_config", {"src": name, "remote_src": True, "expect": name, "patch": own(ID, 9)})
            self.assertEqual((unexpected["failed"], running_id()), (False, 9), unexpected)
            headend(1, "rm", "/root/" + name)
        headend(1, "rm", "-r", "/root/copies")

    def test_takes_files_on_the_headend(self):
        headend(1, "lineupctl", "save", "/root/saved.json")
        result = module("lineup_config", {"src": "/root/saved.json", "remote_src": True,
                                          "expect": "/root/saved.json", "patch": own(ID, 8)})
        self.assertEqual(result["failed"], False, result)
        self.assertEqual(running_id(), 8)
        missing = module("lineup_config", {"src": "/root/none.json", "remote_src": True})
        self.expect_failure(missing, "file", 3, "/root/none.json: No such file or directory")
        headend(1, "rm", "/root/saved.json")

    def test_says_that_something_else_runs_than_was_expected(self):
        self.start_from(3)
        before = len(calls(1))
        for mode in ([], ["--check"]):
            result = module("lineup_config", apply(4, ("expect", LINEUP)), *mode)
            self.expect_failure(result, "expect", 1, "nothing was sent: lineup.json: is not what runs")
        self.assertEqual(calls(1)[before:], ["getHeadendConfig"] * 2)

    def test_expects_what_ran_before_and_so_works_once(self):
        self.start_from(3)
        headend(1, "lineupctl", "save", "/root/saved.json")
        task = {"src": "/root/saved.json", "remote_src": True, "expect": "/root/saved.json", "patch": own(ID, 8)}
        self.assertTrue(module("lineup_config", task)["changed"])
        self.expect_failure(module("lineup_config", task), "expect", 1, "nothing was sent")
        self.assertEqual(running_id(), 8)
        headend(1, "rm", "/root/saved.json")

    def test_says_what_is_wrong_with_a_file(self):
        before = calls(1)
        with open("half.json", "w", encoding="utf-8") as half, open(LINEUP, encoding="utf-8") as whole:
            half.write(whole.read()[:500])
        self.expect_failure(module("lineup_config", {"src": "half.json"}), "file", 3,
                            ": half.json: is no complete configuration")
        self.expect_failure(module("lineup_config", apply("3")), "file", 3,
                            ": the patch: leaves no complete configuration: " + ID)
        result = module("lineup_config", {"src": "none.json"})
        self.assertEqual((result["failed"], result["reason"]), (True, "file"))
        self.assertIn("none.json", result["msg"])
        self.assertEqual(calls(1), before)

    def test_says_that_there_is_no_room_for_its_files(self):
        folder = "/root/.ansible/tmp"
        before = calls(1)
        headend(1, "mkdir", "-p", folder)
        # No room in a folder, nor for one.
        for options, fill in (("size=4k", f"head -c 4096 /dev/zero >{folder}/full"), ("nr_inodes=1", ":")):
            headend(1, "mount", "-t", "tmpfs", "-o", options + ",mode=700", "tmpfs", folder)
            try:
                headend(1, "sh", "-c", fill)
                result = module("lineup_config", apply(4))
            finally:
                headend(1, "umount", folder)
            self.assertEqual((result["failed"], result["changed"], result["reason"]), (True, False, "file"))
            self.assertIn("No space left on device", result["msg"])
        self.assertEqual(calls(1), before)

    def test_leaves_it_to_ansible_to_say_that_the_headend_is_away(self):
        headend(1, "off")
        said = run(*module_command("lineup_config", apply(4)))
        self.assertEqual(said.returncode, 4)
        self.assertIn("headend1 | UNREACHABLE! => {", said.stdout)

    def test_makes_the_folder_of_the_backups(self):
        folder = BACKUPS + "/deep/copies"
        self.start_from(3)
        for mode, made in (["--check"], False), ([], True):
            module("lineup_config", apply(4, ("backup", True), ("backup_dir", folder)), *mode)
            found = headend(1, "sh", "-c", f"stat -c '%a %U' {folder} 2>/dev/null || true")
            self.assertEqual(found, "700 root\n" if made else "")
        self.assertEqual(len(headend(1, "ls", folder).split()), 1)
        headend(1, "rm", "-r", BACKUPS + "/deep")

    def test_sends_nothing_if_what_ran_cannot_be_kept(self):
        self.start_from(3)
        headend(1, "touch", "/root/file")
        result = module("lineup_config", apply(4, ("backup", True), ("backup_dir", "/root/file")))
        self.expect_failure(result, "file", 3, "/root/file: Not a directory")
        headend(1, "mount", "-t", "tmpfs", "-o", "nr_inodes=1", "tmpfs", BACKUPS)
        folders = {"/root/file/copies": "Not a directory", BACKUPS + "/before-changes": "No space left on device"}
        for folder, why in folders.items():
            result = module("lineup_config", apply(4, ("backup", True), ("backup_dir", folder)))
            self.assertEqual((result["failed"], result["reason"]), (True, "file"), result)
            self.assertIn(": " + why, result["msg"])
            self.assertFalse(result["changed"])
        headend(1, "umount", BACKUPS)
        headend(1, "rm", "/root/file")
        self.assertEqual(running_id(), 3)

    def test_takes_no_name_for_its_own_words(self):
        # Where Python ends a line, and other programs may.
        for end in ("\u2028", "\u2029", "\u0085", "\r", "\x0c", "\n"):
            self.start_from(3)
            patch = own("/headendGlobalConfig/headendName", f"a{end}kept what ran in /nowhere")
            result = module("lineup_config", {"src": LINEUP, "patch": own(ID, 3) + patch})
            self.assertEqual((result["changed"], len(result["difference"])), (True, 1), result)
            self.assertNotIn("backup_file", result)

    def test_refuses_empty_names(self):
        before = calls(1)
        for name in ("src", "expect", "backup_dir"):
            for remote in (False, True):
                result = module("lineup_config", dict(apply(4), remote_src=remote, **{name: ""}))
                self.assertEqual((result["failed"], result["msg"]), (True, name + " is empty and names no file"))
        self.assertEqual(calls(1), before)

    def test_says_what_lineupctl_does_not_take(self):
        result = module("lineup_config", apply(4, ("backup", True), ("backup_keep", 0)))
        self.expect_failure(result, "usage", 2, '--keep: "0" is no whole number from 1')

    def test_says_that_the_controller_refuses_breaks_off_or_is_away(self):
        before = running_id()
        self.restart("--refuse", "setHeadendConfig")
        self.expect_failure(module("lineup_config", apply(4)), "controller", 4,
                            "the controller is not ready: refused", "lineup.json was not taken over")
        self.restart("--break", "setHeadendConfig")
        self.expect_failure(module("lineup_config", apply(4)), "controller", 4, "is not known")
        self.assertEqual(running_id(), before)
        kill("headend-simulator")
        self.expect_failure(module("lineup_config", apply(4)), "controller", 4, "Connection refused")

    def test_says_what_was_kept_and_sent_before_it_failed(self):
        # By the call that breaks off: a configuration that is only read is not changed, one that may have
        # been taken over is not known to be, and one that cannot be read back is.
        for call, changed, kept, said in (("getHeadendConfig:1", False, [], "No more data to read"),
                                          ("setHeadendConfig", False, [7], "is not known"),
                                          ("getHeadendConfig:2", True, [7], "but could not be read back")):
            self.restart()
            self.start_from(7)
            headend(1, "sh", "-c", f"rm -f {BACKUPS}/*")
            self.restart("--break", call)
            result = module("lineup_config", apply(8, ("backup", True)))
            self.expect_failure(result, "controller", 4)
            self.assertEqual((result["changed"], said in result["msg"]), (changed, True), result)
            paths = headend(1, "sh", "-c", f"ls {BACKUPS}/* 2>/dev/null || true").split()
            self.assertEqual([result[key] for key in result if key == "backup_file"], paths)
            held = [json.loads(headend(1, "lineupctl", "show", "--format", "json", path)) for path in paths]
            self.assertEqual([record["headendGlobalConfig"]["headendId"] for record in held], kept)

    def test_says_that_something_else_runs_than_was_sent(self):
        # Reading back takes long enough for somebody else.
        self.restart("--delay", "getHeadendConfig:2=10")
        with subprocess.Popen(module_command("lineup_config", apply(4)), stdout=subprocess.PIPE, text=True) as sending:
            wait_until(lambda: "setHeadendConfig" in calls(1))
            headend(1, "sh", "-c", "cat >/root/patch.json", stdin=json.dumps(own(ID, 9)))
            headend(1, "lineupctl", "save", "/root/saved.json")
            headend(1, "lineupctl", "apply", "--patch", "/root/patch.json", "/root/saved.json")
            said = sending.communicate()[0]
        self.assertEqual(sending.returncode, 2, said)
        self.assertIn("the headend runs something else than was sent: lineup.json: was sent, but", said)
        self.assertIn('"reason": "other"', said)
        self.assertIn('"changed": true', said)
        self.assertIn("id: 4 -> 9", said)

    def test_says_that_it_was_killed(self):
        self.restart("--delay", "setHeadendConfig=60")
        with subprocess.Popen(module_command("lineup_config", apply(4)), stdout=subprocess.PIPE, text=True) as sending:
            # It has the difference, and sends.
            wait_until(lambda: processes("lineupctl") and calls(1)[-1:] == ["getHeadendConfig"])
            kill("lineupctl")
            said = sending.communicate()[0]
        self.assertIn("signal 9 ended lineupctl", said)
        self.assertIn('"reason": "signal"', said)

    def test_says_that_lineupctl_is_not_there(self):
        headend(1, "umount", "/usr/local/bin/lineupctl")
        for name, arguments in (("lineup_config", apply(4)), ("lineup_facts", {})):
            result = module(name, arguments)
            self.assertTrue(result["failed"])
            self.assertIn('Failed to find required executable "lineupctl"', result["msg"])


class Power(OnAHeadend):
    def test_on_with_options_is_refused_if_the_headend_is_on(self):
        again = run("headend", "1", "on", "--refuse", "setHeadendConfig")
        self.assertEqual((again.returncode, again.stdout), (1, "headend 1 is on already\n"))
        self.assertEqual(headend(1, "on"), "")
        self.start_from(3)  # it does not refuse


class LineupFacts(OnAHeadend):
    def test_are_what_the_headend_runs(self):
        facts = module("lineup_facts")["ansible_facts"]
        self.assertEqual(facts["lineup_running"], config(1))
        version = headend(1, "lineupctl", "--version").split()[1]
        self.assertEqual(facts["lineup_version"], version)
        inputs = facts["lineup_rf_inputs"]
        self.assertEqual(sorted(inputs), ["SAT%d" % n for n in range(1, 9)] + ["TDT1", "TDT2"])
        self.assertEqual(inputs["SAT1"], {"enabled": True, "locked": True})
        self.assertEqual(inputs["SAT3"], {"enabled": False, "locked": False})

    def test_are_also_found_while_the_playbook_goes_on(self):
        facts = module("lineup_facts", {}, "-B", "60", "-P", "1")["ansible_facts"]
        self.assertEqual(facts["lineup_running"], config(1))

    def test_fail_where_the_controller_is_away(self):
        kill("headend-simulator")
        self.expect_failure(module("lineup_facts"), "controller", 4, "Connection refused")


class Documentation(OnAHeadend):
    def test_names_all_that_a_failure_returns(self):
        kill("headend-simulator")
        for name, arguments in (("lineup_config", apply(4)), ("lineup_facts", {})):
            documented = json.loads(run("ansible-doc", "--json", "lineup.console." + name).stdout)
            result = module(name, arguments)
            self.assertEqual(result["reason"], "controller")
            # Ansible's own, and those of this test.
            others = {"changed", "msg", "stdout_lines", "stderr_lines", "failed", "printed"}
            self.assertLessEqual(set(result) - others, set(documented["lineup.console." + name]["return"]))

    def test_is_shown_by_ansible_doc(self):
        for name in ("lineup_config", "lineup_facts"):
            shown = run("ansible-doc", "lineup.console." + name).stdout
            for part in ("EXAMPLES:", "RETURN VALUES:", "REQUIREMENTS:"):
                self.assertIn(part, shown)


if __name__ == "__main__":
    unittest.main(verbosity=2)
