# SPDX-License-Identifier: MIT
"""What of the packaging for macOS can be known without a Mac: its property lists, its scripts, the workflow."""

import os
import pathlib
import plistlib
import re
import subprocess
import unittest

import yaml

PROJECT = pathlib.Path(os.environ["CARTLOOM_PROJECT"])
INFO = pathlib.Path(os.environ["CARTLOOM_INFO_PLIST"])
VERSION = os.environ["CARTLOOM_VERSION"]
FOLDER = PROJECT / "packaging/macos"
ENTITLEMENTS = FOLDER / "Cartloom.entitlements"
BUNDLE_OF_ARES = PROJECT / "packaging/linux/ares.app/Contents/Info.plist.in"
WORKFLOW = PROJECT / ".github/workflows/build.yml"


def read(file):
    """As libplist reads it, in its binary form, and from there as Python does."""
    return plistlib.loads(subprocess.run(["plistutil", "-i", file, "-f", "bin", "-o", "-"],
                                         capture_output=True, check=True).stdout)


class PropertyLists(unittest.TestCase):
    def test_the_bundle_says_what_it_is(self):
        info = read(INFO)
        expected = {
            "CFBundleIdentifier": "org.cartloom.Cartloom",
            "CFBundleExecutable": "Cartloom",
            "CFBundleIconFile": "Cartloom",
            "CFBundlePackageType": "APPL",
            "CFBundleShortVersionString": VERSION,
            "CFBundleVersion": VERSION,
            "LSApplicationCategoryType": "public.app-category.games",
            "NSHighResolutionCapable": True,
        }
        self.assertEqual({key: info.get(key) for key in expected}, expected)
        self.assertRegex(info["LSMinimumSystemVersion"], r"^\d+\.\d+$")

    def test_what_the_launcher_fetches_is_not_put_into_quarantine(self):
        self.assertNotIn("LSFileQuarantineEnabled", read(INFO))

    def test_nothing_is_left_to_fill_in(self):
        self.assertNotRegex(INFO.read_text(), r"@\w+@|\$\{")

    def test_the_hardened_runtime_allows_one_thing(self):
        self.assertEqual(read(ENTITLEMENTS), {"com.apple.security.cs.allow-jit": True})

    def test_the_bundle_of_the_machines_ares_names_its_program(self):
        self.assertEqual(read(BUNDLE_OF_ARES)["CFBundleExecutable"], "ares")


class Scripts(unittest.TestCase):
    def run_without_secrets(self, script, *arguments):
        return subprocess.run([FOLDER / script, *arguments], capture_output=True, text=True, check=False,
                              env={"PATH": os.environ["PATH"]})

    def test_without_secrets_the_steps_are_skipped_and_say_so(self):
        for script, said in (("import-certificate", "CARTLOOM_CERTIFICATE is not set"),
                             ("notarise", "CARTLOOM_SIGNING_IDENTITY is not set"),
                             ("sign", "CARTLOOM_SIGNING_IDENTITY is not set")):
            with self.subTest(script):
                result = self.run_without_secrets(script, INFO)
                self.assertEqual((result.returncode, result.stderr), (0, ""))
                self.assertIn(said, result.stdout)

    def test_a_part_of_the_secrets_is_not_enough(self):
        result = subprocess.run([FOLDER / "notarise", INFO], capture_output=True, text=True, check=False,
                                env={"PATH": os.environ["PATH"], "CARTLOOM_SIGNING_IDENTITY": "somebody"})
        self.assertEqual(result.returncode, 0)
        self.assertIn("skipped, CARTLOOM_NOTARY_APPLE_ID is not set", result.stdout)


class Workflow(unittest.TestCase):
    def setUp(self):
        # A key called "on" is what YAML 1.1 takes for a truth value.
        self.jobs = yaml.safe_load(WORKFLOW.read_text())["jobs"]

    def steps(self):
        return [step for job in self.jobs.values() for step in job["steps"]]

    def test_each_step_calls_one_script_of_the_project_or_one_action_of_a_fixed_version(self):
        self.assertEqual(set(self.jobs), {"linux", "debian-package", "macos"})
        for step in self.steps():
            with self.subTest(step):
                if "uses" in step:
                    self.assertRegex(step["uses"], r"^actions/[\w-]+@v\d+$")
                    continue
                command = step["run"]
                self.assertNotRegex(command, r"[\n;&|<>`]|\$\(")
                script = PROJECT / command.split()[0]
                self.assertTrue(os.access(script, os.X_OK), f"{script} cannot be run")

    def test_each_secret_is_one_that_a_script_reads(self):
        scripts = "".join(path.read_text() for path in
                          [*FOLDER.glob("[a-z]*"), *PROJECT.glob("packaging/deb/build")] if os.access(path, os.X_OK))
        names = re.findall(r"secrets\.(\w+)", WORKFLOW.read_text())
        self.assertTrue(names)
        for name in names:
            self.assertIn(name, scripts)


if __name__ == "__main__":
    unittest.main()
