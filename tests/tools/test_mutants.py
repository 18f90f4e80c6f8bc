# SPDX-License-Identifier: MIT
"""tests/mutants/run, on a small project whose compiler and tests are shell scripts."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

TOOL = os.environ["CARTLOOM_MUTANTS"]
# Stand in for CMake and CTest: what contains "?" does not compile, and each test of Sum looks for its own line.
CMAKE = '#!/bin/sh\necho "$@" >>../cmake-calls\n! grep -q "?" src/sum.cpp\n'
CTEST = """#!/bin/sh
case "$*" in
*First*) grep -q 'one + two' src/sum.cpp ;;
*Second*) grep -q 'return sum' src/sum.cpp ;;
*) exit 8 ;;
esac
"""
SOURCE = "int sum = one + two;\nif (late)\n    stop();\nif (early)\n    stop();\nreturn sum;\n"


def mutant(name, line, becomes, *tests):
    return {"name": name, "file": "src/sum.cpp", "line": line, "becomes": becomes, "tests": list(tests)}


SUBTRACTS = mutant("subtracts", "one + two", "one - two", "First")
NEVER_STOPS = mutant("never stops", "if (late)", "if (false)", "First", "Second")


class Mutants(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.project = pathlib.Path(folder.name)
        self.write("src/sum.cpp", SOURCE)
        self.write("build/left alone", "")
        self.write("tools/cmake", CMAKE)
        self.write("tools/ctest", CTEST)
        self.write("tests/mutants/run", pathlib.Path(TOOL).read_text())

    def write(self, path, text):
        file = self.project / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)
        file.chmod(0o755)

    def run_tool(self, mutants, *arguments):
        """The exit status and the lines of both streams."""
        tables = ["[[mutant]]\n" + "".join(f"{key} = {value!r}\n" for key, value in item.items()) for item in mutants]
        self.write("tests/mutants/mutants.toml", "".join(tables))
        path = f"{self.project}/tools:{os.environ['PATH']}"
        result = subprocess.run(["/usr/bin/python3", "-B", self.project / "tests/mutants/run", *arguments],
                                env={**os.environ, "PATH": path}, capture_output=True, text=True, check=False)
        return result.returncode, result.stdout.splitlines() + result.stderr.splitlines()

    def builds(self):
        calls = self.project / "build/cmake-calls"
        return calls.read_text().splitlines() if calls.exists() else []

    def test_a_mutant_that_its_test_notices_is_killed(self):
        self.assertEqual(self.run_tool([SUBTRACTS]), (0, ["subtracts: killed", "1 mutants, 1 killed"]))
        self.assertTrue(self.builds()[-1].endswith("--target tst_First"))

    def test_a_mutant_that_a_test_does_not_notice_survives(self):
        self.assertEqual(self.run_tool([NEVER_STOPS, SUBTRACTS]),
                         (1, ["never stops: SURVIVES First, Second", "subtracts: killed", "2 mutants, 1 killed"]))

    def test_every_named_test_must_notice(self):
        both = {**SUBTRACTS, "tests": ["First", "Second"]}
        self.assertEqual(self.run_tool([both])[1], ["subtracts: SURVIVES Second", "1 mutants, 0 killed"])

    def test_a_line_that_is_gone_or_ambiguous_is_reported_before_anything_is_built(self):
        gone = mutant("gone", "one * two", "", "First")
        ambiguous = mutant("ambiguous", "stop();", "", "First")
        self.assertEqual(self.run_tool([SUBTRACTS, gone, ambiguous], "subtracts"),
                         (1, ["gone: the line is found 0 times in src/sum.cpp",
                              "ambiguous: the line is found 2 times in src/sum.cpp"]))
        self.assertEqual(self.builds(), [])

    def test_a_file_that_is_gone_is_reported(self):
        self.assertEqual(self.run_tool([{**SUBTRACTS, "file": "src/none.cpp"}]),
                         (1, ["subtracts: the line is found 0 times in src/none.cpp"]))

    def test_a_mutant_that_changes_or_names_nothing_is_reported(self):
        for nothing in ({"becomes": "one + two"}, {"tests": []}):
            self.assertEqual(self.run_tool([{**SUBTRACTS, **nothing}]),
                             (1, ["subtracts: changes nothing, or names no test"]))

    def test_a_name_that_is_used_twice_is_reported(self):
        self.assertEqual(self.run_tool([SUBTRACTS, SUBTRACTS]), (1, ["subtracts: two mutants of this name"]))

    def test_a_mutant_that_does_not_compile_is_not_killed(self):
        self.assertEqual(self.run_tool([mutant("broken", "return sum", "return sum?", "Second")]),
                         (1, ["broken: does not compile", "1 mutants, 0 killed"]))

    def test_a_test_that_fails_without_a_mutant_is_reported(self):
        self.assertEqual(self.run_tool([{**SUBTRACTS, "tests": ["First", "Third"]}]),
                         (1, ["Without a mutant these fail: Third"]))

    def test_the_next_mutant_starts_from_the_present_state_of_the_tree(self):
        returns = mutant("returns", "return sum", "return 0", "Second")
        copy = self.project / "build/mutants/src"
        self.write("src/removed.cpp", "")
        self.assertEqual(self.run_tool([SUBTRACTS, returns])[0], 0)
        self.assertEqual((copy / "sum.cpp").read_text(), SOURCE)
        (self.project / "src/removed.cpp").unlink()
        self.write("src/sum.cpp", SOURCE + "// more\n")
        os.utime(self.project / "src/sum.cpp", (0, 0))
        self.assertEqual(self.run_tool([returns])[0], 0)
        self.assertEqual((copy / "sum.cpp").read_text(), SOURCE + "// more\n")
        self.assertFalse((copy / "removed.cpp").exists())

    def test_what_differs_is_newer_than_what_was_built(self):
        os.utime(self.project / "src/sum.cpp", (0, 0))
        self.assertEqual(self.run_tool([{**SUBTRACTS, "tests": ["Third"]}])[0], 1)
        self.assertGreater((self.project / "build/mutants/src/sum.cpp").stat().st_mtime, 0)

    def test_the_build_folder_is_not_copied(self):
        self.assertEqual(self.run_tool([SUBTRACTS])[0], 0)
        self.assertFalse((self.project / "build/mutants/build/left alone").exists())

    def test_ten_of_the_day_are_run(self):
        many = [{**SUBTRACTS, "name": f"number {i}"} for i in range(23)]
        status, lines = self.run_tool(many, "--today")
        self.assertEqual((status, lines[-1]), (0, "10 mutants, 10 killed"))
        numbers = [int(re.fullmatch(r"number (\d+): killed", line)[1]) for line in lines[:-1]]
        self.assertEqual(numbers, [(numbers[0] + i * 23 // 10) % 23 for i in range(10)])

    def test_an_unknown_name_is_refused(self):
        status, lines = self.run_tool([SUBTRACTS], "adds")
        self.assertEqual((status, lines[-1]), (2, "tests/mutants/run: error: no such mutant: adds"))
        self.assertEqual(self.builds(), [])


if __name__ == "__main__":
    unittest.main()
