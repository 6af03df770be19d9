"""A file that the console saves is read whole by another program."""

import os
import tempfile
import unittest

import headend

SEEDS = range(20)


class SavedFileTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.controller = headend.Controller(None, headend.random_status(0)).serve()

    def save_and_read(self, config):
        self.controller.config = config
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "saved.json")
            self.assertEqual(headend.run_console(["--save", path]), "Saved config to: %s\n" % path)
            saved, rest = headend.read_file(path)
        self.assertEqual(rest, b"")
        return saved

    def test_every_field_of_the_running_configuration_is_in_the_file(self):
        for seed in SEEDS:
            with self.subTest(seed=seed):
                config = headend.random_config(seed)
                self.assertEqual(self.save_and_read(config), config)

    def test_edits_are_in_the_file_too(self):
        config = headend.random_config(99)
        config.headendGlobalConfig.headendId = 3
        self.controller.config = config
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "edited ✓.json".replace(" ", "-"))
            headend.run_console([], "id 7\nsave %s\n" % path)
            saved, _ = headend.read_file(path)
        self.assertNotEqual(saved, config)
        config.headendGlobalConfig.headendId = 7
        self.assertEqual(saved, config)


if __name__ == "__main__":
    unittest.main()
