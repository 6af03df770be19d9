"""A file that another program has written restores whole."""

import copy
import os
import tempfile
import unittest

import headend
from korvel.hub_module.ttypes import HeadendConfig, InstallerInfo

SEEDS = range(20)


class RestoredFileTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.controller = headend.Controller(HeadendConfig(), headend.random_status(0)).serve()

    def setUp(self):
        self.controller.calls.clear()
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.path = os.path.join(self.folder.name, "written.json")

    def test_every_field_reaches_the_controller(self):
        for seed in SEEDS:
            with self.subTest(seed=seed):
                self.controller.calls.clear()
                config = headend.random_config(seed)
                headend.write_file(self.path, config)
                printed = headend.run_console(["--restore", self.path])
                self.assertEqual(printed, "Restored config from: %s\n" % self.path)
                self.assertEqual(self.controller.calls, [("setHeadendConfig", config)])

    def test_at_the_prompt_it_replaces_the_running_configuration(self):
        self.controller.config = headend.random_config(50)
        config = headend.random_config(51)
        headend.write_file(self.path, config)
        headend.run_console([], "restore %s\n" % self.path)
        self.assertEqual(self.controller.calls, [("getHeadendConfig",), ("setHeadendConfig", config)])

    def test_fields_that_the_file_lacks_keep_their_values(self):
        self.controller.config = headend.random_config(52)
        expected = copy.deepcopy(self.controller.config)
        expected.installerInfo.name = "Núñez ✓"
        headend.write_file(self.path, HeadendConfig(
            installerInfo=InstallerInfo(name="Núñez ✓", phone=None, email=None)))
        headend.run_console([], "restore %s\n" % self.path)
        self.assertEqual(self.controller.calls, [("getHeadendConfig",), ("setHeadendConfig", expected)])


if __name__ == "__main__":
    unittest.main()
