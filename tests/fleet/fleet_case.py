# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""What the tests of fleet/ share: clips, the program, the program with accidents, and what must hold of the outputs."""

import csv
import filecmp
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAM = os.environ["OVERLAY_PROGRAM"]
SOURCE = os.environ["OVERLAY_SOURCE_DIR"]
FLEET = os.path.join(SOURCE, "fleet")
HERE = os.path.dirname(os.path.abspath(__file__))
CONFIG = os.path.join(SOURCE, "examples", "full_screen_hud.json")
# Gives the same bytes every time.
FIXED = ["--video-codec", "mpeg2video"]
SKIPPED = 77


def skip_all(reason):
    """A release is tested with all engines: there a missing one is a failure."""
    if os.environ.get("OVERLAY_ENGINES") == "required":
        sys.exit(f"failed, as OVERLAY_ENGINES requires it: {reason}")
    print(f"skipped: {reason}")
    sys.exit(SKIPPED)


def overlay(*words):
    subprocess.run([PROGRAM, *words], check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)


class FleetCase(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="overlay-fleet-")
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        os.makedirs(cls.file("clips"))
        os.makedirs(cls.file("serial"))
        cls.bases = []
        for number, seconds in enumerate(("1", "2")):
            base = cls.file(f"base{number}.ts")
            overlay("sample", base, "--seconds", seconds, "--size", "160x120", "--fps", "10", "--video-codec",
                    "mpeg2video")
            overlay("burn", base, "-c", CONFIG, "-o", cls.file(f"serial/base{number}.ts"), "--threads", "1", *FIXED)
            cls.bases.append(base)

    @classmethod
    def file(cls, name):
        return os.path.join(cls.folder, name)

    def make_clips(self, names):
        """Copies of the made flights under these names; gives the base of each."""
        origin = {}
        for number, name in enumerate(names):
            base = self.bases[number % len(self.bases)]
            shutil.copyfile(base, self.file("clips/" + name))
            origin[name] = os.path.basename(base)
        return origin

    def make_broken_clips(self):
        """Clips that no program can burn, with the reasons as they must be listed."""
        with open(self.file("clips/empty.ts"), "wb"):
            pass
        with open(self.file("clips/noise.ts"), "wb") as noise:
            noise.write(bytes(range(7, 256, 3)) * 400)
        with open(self.file("clips/text, \"quoted\".ts"), "w") as text:
            text.write("no clip\n")
        os.mkdir(self.file("clips/folder.ts"))
        subprocess.run(["ffmpeg", "-v", "error", "-i", self.bases[0], "-map", "0:d", "-c", "copy",
                        self.file("clips/no_picture.ts")], check=True, stdin=subprocess.DEVNULL)
        no_video = "; give a file or an address that holds video"
        unreadable = ": cannot be opened: Invalid data found when processing input" + no_video
        return {"empty.ts": unreadable, "noise.ts": unreadable, "text, \"quoted\".ts": unreadable,
                "folder.ts": ": cannot be opened: Is a directory; check that it can be read",
                "no_picture.ts": ": holds no video stream; give a clip with video",
                "missing.ts": ": cannot be opened: No such file or directory; check the path"}

    def write_list(self, names):
        with open(self.file("list.txt"), "w") as file:
            file.writelines(self.file("clips/" + name) + "\n" for name in names)
        return self.file("list.txt")

    def environment(self):
        """The program has accidents, as accident.sh says."""
        os.makedirs(self.file("marks"), exist_ok=True)
        return {"FLEET_PROGRAM": os.path.join(HERE, "accident.sh"), "ACCIDENT_MARKS": self.file("marks")}

    def rows(self, out):
        with open(os.path.join(out, "summary.csv"), newline="") as file:
            rows = list(csv.DictReader(file))
        return {os.path.basename(row["clip"]): row for row in rows}

    def expect_outputs(self, out, origin):
        """These outputs, each equal to that of a serial run, and no half file."""
        folders = {"logs", "summaries"}
        others = {"summary.csv", "summary.txt", "clips.txt"}
        self.assertEqual(sorted(set(os.listdir(out)) - folders - others), sorted(origin))
        for name, base in origin.items():
            self.assertTrue(filecmp.cmp(os.path.join(out, name), self.file("serial/" + base), shallow=False), name)
        hidden = [name for name in os.listdir(os.path.join(out, "summaries")) if name.startswith(".")]
        self.assertEqual(hidden, [])
