"""The released console is hardened against what hostile input might make of a mistake in it.

Usage: hardening_test.py CONSOLE OBJECT..., the program and the objects of our own code in it.
"""

import os
import re
import subprocess
import sys
import unittest

CONSOLE, *OBJECTS = sys.argv[1:]
del sys.argv[1:]


def readelf(option, file):
    return subprocess.run(["readelf", "--wide", option, file], check=True, text=True,
                          stdout=subprocess.PIPE, env=os.environ | {"LC_ALL": "C"}).stdout


def undefined_symbols(file):
    """The names that a file takes from others, without their versions."""
    return set(re.findall(r" UND ([^@\s]+)", readelf("--symbols", file)))


class Hardening(unittest.TestCase):
    def segment(self, name):
        """The access to the console's one segment of that name, such as "RW "."""
        flags = re.findall(rf"^ +{name} +(?:0x\w+ +){{5}}(.{{3}})",
                           readelf("--program-headers", CONSOLE), re.MULTILINE)
        self.assertEqual(len(flags), 1, name)
        return flags[0]

    def test_loaded_at_any_address(self):
        self.assertRegex(readelf("--file-header", CONSOLE), r"Type: +DYN ")
        self.assertRegex(readelf("--dynamic", CONSOLE), r"\(FLAGS_1\).* PIE\b")

    def test_resolved_at_start_and_read_only_then(self):
        self.assertRegex(readelf("--dynamic", CONSOLE), r"\(FLAGS\) +.*\bBIND_NOW\b")
        self.assertEqual(self.segment("GNU_RELRO"), "R  ")

    def test_no_memory_is_both_written_and_run(self):
        self.assertEqual(self.segment("GNU_STACK"), "RW ")
        self.assertNotIn(" RWE ", readelf("--program-headers", CONSOLE))

    # The static libraries bring a guard and calls of their own, so our objects are looked at.

    def test_stack_is_guarded(self):
        self.assertIn("__stack_chk_fail", undefined_symbols(CONSOLE))
        guarded = [file for file in OBJECTS if "__stack_chk_fail" in undefined_symbols(file)]
        self.assertGreater(len(guarded), len(OBJECTS) / 2)

    def test_calls_of_the_c_library_are_fortified(self):
        fortified = [file for file in OBJECTS if "__vasprintf_chk" in undefined_symbols(file)]
        self.assertNotEqual(fortified, [])
        for file in OBJECTS:
            self.assertTrue(undefined_symbols(file).isdisjoint({"vasprintf", "vsnprintf"}), file)

    # The linked console has no such property, as not all of the static Thrift library's objects have.
    def test_own_code_is_built_for_control_flow_enforcement(self):
        if not re.search(r"Machine: .*X86-64", readelf("--file-header", CONSOLE)):
            self.skipTest("on x86-64 only")
        self.assertGreater(len(OBJECTS), 30)
        for file in OBJECTS:
            with self.subTest(file):
                self.assertRegex(readelf("--notes", file), r"x86 feature:.*\bIBT, SHSTK\b")


if __name__ == "__main__":
    unittest.main()
