# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""The template unit: what systemd says of it, and how much of the system it leaves to a stream."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest

from fleet_case import skip_all

PROGRAM = os.environ["OVERLAY_PROGRAM"]
UNIT = os.environ["OVERLAY_UNIT"]


def analyze(*words):
    return subprocess.run(["systemd-analyze", *words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True)


class SystemdTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        with open(UNIT) as file:
            self.text = file.read()
        self.unit = os.path.join(folder.name, "stanag-overlay@nose.service")
        # The program stands where the build put it, the environment file nowhere yet.
        with open(self.unit, "w") as file:
            file.write(re.sub(r"(?m)^ExecStart=\S+", f"ExecStart={PROGRAM}", self.text))

    def write(self, text):
        with open(self.unit, "w") as file:
            file.write(text)

    def test_systemd_takes_it(self):
        result = analyze("verify", "--man=no", self.unit)
        self.assertEqual((result.returncode, result.stdout), (0, ""))

    def test_systemd_would_see_a_mistake(self):
        self.write(self.text.replace("RestrictRealtime=yes", "RestrictRealtme=yes"))
        self.assertIn("Unknown key 'RestrictRealtme' in section [Service]", analyze("verify", "--man=no", self.unit).stdout)

    def test_it_is_shut_in(self):
        result = analyze("security", "--offline=yes", "--threshold=25", "--no-pager", self.unit)
        self.assertEqual(result.returncode, 0, result.stdout)

    def test_installed_it_names_the_installed_program(self):
        self.assertRegex(self.text, r"(?m)^ExecStart=/\S+/bin/stanag-overlay burn \$\{INPUT\} --live -c \$\{CONFIG\} "
                                    r"-o \$\{OUTPUT\} \$BURN_OPTIONS$")


if __name__ == "__main__":
    if shutil.which("systemd-analyze") is None:
        skip_all("systemd-analyze is not installed (systemd)")
    unittest.main(verbosity=2)
