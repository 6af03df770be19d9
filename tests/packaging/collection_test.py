"""The collection itself: that it is whole, documented, and as Ansible's own checks want it.

Usage: collection_test.py PROJECT
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

PROJECT = sys.argv.pop(1)
SOURCE = os.path.join(PROJECT, "packaging/ansible")
PYTHON = "/usr/bin/python3"  # the one that Debian's packages are for

# Those of ansible-test's checks for which it loads something from the network. Of them, validate-modules
# also runs by itself.
WITH_NETWORK = ("ansible-doc", "import", "pep8", "pylint", "runtime-metadata", "validate-modules", "yamllint")
VALIDATE = "/usr/lib/python3/dist-packages/ansible_test/_util/controller/sanity/validate-modules/validate.py"


class Collection(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.home = tempfile.mkdtemp()
        cls.folder = os.path.join(cls.home, "ansible_collections/lineup/console")
        shutil.copytree(SOURCE, cls.folder, ignore=shutil.ignore_patterns("__pycache__"))
        cls.environment = dict(os.environ, HOME=cls.home, ANSIBLE_HOME=cls.home, LC_ALL="C.UTF-8",
                               PATH="/usr/bin:" + os.environ["PATH"], ANSIBLE_COLLECTIONS_PATH=cls.home)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.home)

    def run_well(self, *words):
        """What a command prints that has to end well."""
        done = subprocess.run(words, cwd=self.folder, env=self.environment, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, timeout=240, check=False)
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout

    def test_has_the_version_of_the_console(self):
        with open(os.path.join(PROJECT, "packaging/debian/changelog"), encoding="utf-8") as changelog:
            version = re.match(r"\S+ \(([0-9.]+)", changelog.readline()).group(1)
        with open(os.path.join(SOURCE, "galaxy.yml"), encoding="utf-8") as galaxy:
            self.assertIn("\nversion: " + version + "\n", galaxy.read())
        with open(os.path.join(SOURCE, "CHANGELOG.md"), encoding="utf-8") as changes:
            self.assertIn("\n## " + version + "\n", changes.read())

    def test_is_built_and_installed(self):
        built = os.path.join(self.home, "built")
        self.run_well("ansible-galaxy", "collection", "build", "--output-path", built)
        archive = os.path.join(built, os.listdir(built)[0])
        place = os.path.join(self.home, "installed")
        self.run_well("ansible-galaxy", "collection", "install", "--force", "-p", place, archive)
        installed = os.path.join(place, "ansible_collections/lineup/console")
        for name in ("LICENSE", "plugins/modules/lineup_config.py", "roles/lineup/tasks/main.yml"):
            with open(os.path.join(installed, name), encoding="utf-8") as file, \
                    open(os.path.join(SOURCE, name), encoding="utf-8") as source:
                self.assertEqual(file.read(), source.read())

    def test_passes_the_checks_of_ansible_test(self):
        checks = re.findall("^[a-z0-9-]+$", self.run_well("ansible-test", "sanity", "--list-tests"), re.MULTILINE)
        self.assertIn("symlinks", checks)
        tests = [word for check in checks if check not in WITH_NETWORK for word in ("--test", check)]
        version = self.run_well(PYTHON, "-c", "import sys; print('%d.%d' % sys.version_info[:2])").strip()
        self.run_well("ansible-test", "sanity", "--color", "no", "--python", version, *tests)

    def test_has_modules_whose_documentation_is_valid(self):
        done = subprocess.run(
            [PYTHON, VALIDATE, "--format", "plain", "--collection", "ansible_collections/lineup/console",
             "plugins/modules"],
            cwd=self.folder, env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            text=True, timeout=120, check=False)
        if "ModuleNotFoundError" in done.stdout:
            self.skipTest(done.stdout.splitlines()[-1])
        # The licence is this project's.
        said = [line for line in done.stdout.splitlines() if "missing-gplv3-license" not in line]
        self.assertEqual(said, [])
        self.assertEqual(len(done.stdout.splitlines()), 2)  # one for each module: it looked at both

    def test_has_an_inventory_and_a_playbook_in_its_readme_that_bring_the_package(self):
        with open(os.path.join(SOURCE, "README.md"), encoding="utf-8") as readme:
            files = re.findall(r"^```yaml\n# (\S+)\n(.*?)^```", readme.read(), re.DOTALL | re.MULTILINE)
        for name, content in files:
            with open(os.path.join(self.home, name), "w", encoding="utf-8") as file:
                file.write(content)
        self.assertIn("lineup_package_file: ", dict(files)["site.yml"])
        inventory, playbook = (os.path.join(self.home, name) for name in ("inventory.yml", "site.yml"))
        listed = self.run_well("ansible-playbook", "-i", inventory, playbook, "--list-tasks", "--list-hosts")
        self.assertIn("bellevue.example", listed)
        self.assertIn("Install the package", listed)

    def test_has_settings_in_its_guide_that_ansible_takes(self):
        with open(os.path.join(PROJECT, "docs/fleet.md"), encoding="utf-8") as guide:
            settings = re.search("^```ini\n(.*?)^```", guide.read(), re.DOTALL | re.MULTILINE).group(1)
        with open(os.path.join(self.home, "ansible.cfg"), "w", encoding="utf-8") as file:
            file.write(settings)
        dump = self.run_well("env", "ANSIBLE_CONFIG=" + file.name, "ansible-config", "dump", "--type", "all",
                             "--only-changed")
        for name, value in (("DEFAULT_FORKS", "25"), ("pipelining", "True"), ("reconnection_retries", "2")):
            self.assertIn(f"\n{name}({file.name}) = {value}\n", dump)

    def test_says_that_there_is_no_room_even_for_a_folder_on_the_headend(self):
        src = os.path.join(self.home, "any.json")
        with open(src, "w", encoding="utf-8") as file:
            file.write("{}")
        place = os.path.join(self.home, "full")
        os.mkdir(place)
        arguments = f"src={src}"
        ansible = ["ansible", "localhost", "-i", "localhost,", "-c", "local", "-m", "lineup.console.lineup_config"]
        alone = ["unshare", "--mount", "--propagation", "private"]
        if subprocess.run([*alone, "mount", "-t", "tmpfs", "none", place], stderr=subprocess.DEVNULL,
                          check=False).returncode != 0:
            self.skipTest("namespaces are forbidden")
        for more in ("", " remote_src=true"):
            done = subprocess.run(
                [*alone, "sh", "-c", 'mount -t tmpfs -o nr_inodes=1 none "$0" && exec "$@"', place, *ansible, "-a",
                 arguments + more], cwd=self.home, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                env=dict(self.environment, ANSIBLE_REMOTE_TMP=place, ANSIBLE_LOCAL_TEMP=self.home), timeout=240,
                check=False)
            self.assertEqual(done.returncode, 2, done.stdout)
            self.assertIn("localhost | FAILED! => {", done.stdout)
            self.assertIn('"reason": "file"', done.stdout)
            self.assertIn("No space left on device", done.stdout)

    def test_passes_ansible_lint(self):
        if shutil.which("ansible-lint") is None:
            self.skipTest("ansible-lint is not installed")
        # What Debian 12 has, 2.14, is too old for the lint of Debian 13.
        self.run_well("ansible-lint", "--offline", "--strict", "-p", "-x", "meta-runtime[unsupported-version]")


if __name__ == "__main__":
    unittest.main(verbosity=2)
