"""A file that the console saves is read whole by another program, and one that another has written restores whole."""

import os
import tempfile
import unittest

import headend

SEEDS = range(20)


class FilesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.controller = headend.Controller(None, headend.random_status(0)).serve()

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = os.path.join(folder.name, "config ✓.json")

    def test_every_field_of_the_running_configuration_is_in_a_saved_file(self):
        for seed in SEEDS:
            with self.subTest(seed=seed):
                self.controller.config = headend.random_config(seed)
                self.assertEqual(headend.run_console(["--save", self.path]), "Saved config to: %s\n" % self.path)
                self.assertEqual(headend.read_file(self.path), (self.controller.config, b""))

    def test_every_field_of_a_restored_file_reaches_the_controller(self):
        for seed in SEEDS:
            with self.subTest(seed=seed):
                self.controller.calls.clear()
                config = headend.random_config(seed)
                headend.write_file(self.path, config)
                self.assertEqual(headend.run_console(["--restore", self.path]),
                                 "Restored config from: %s\n" % self.path)
                self.assertEqual(self.controller.calls, [("setHeadendConfig", config)])


if __name__ == "__main__":
    unittest.main()
