# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""The scripts of fleet/ without an engine: one clip, what is refused and in which words, what shellcheck says."""

import glob
import json
import os
import shutil
import subprocess
import unittest

from fleet_case import CONFIG, FIXED, FLEET, PROGRAM, FleetCase

SCRIPTS = sorted(glob.glob(f"{FLEET}/**/*.sh", recursive=True))


class ScriptsTest(FleetCase):
    def call(self, script, *words, **environment):
        return subprocess.run([f"{FLEET}/{script}", *words], text=True, stdin=subprocess.DEVNULL, cwd=self.folder,
                              env=dict(os.environ, FLEET_PROGRAM=PROGRAM, **environment),
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def setUp(self):
        os.chdir(self.folder)
        shutil.copyfile(self.bases[0], "a.ts")
        shutil.rmtree("out", ignore_errors=True)

    def read(self, name):
        with open(self.file(name)) as file:
            return file.read()

    def test_shellcheck_is_content(self):
        self.assertGreater(len(SCRIPTS), 7)
        result = subprocess.run(["shellcheck", "-x", *SCRIPTS, os.path.join(os.path.dirname(__file__), "accident.sh")],
                                stdout=subprocess.PIPE, text=True)
        self.assertEqual(result.stdout, "")

    def test_scripts_for_people_have_help(self):
        for script in ("burn_one.sh", "summarise.sh", "slurm/burn_array.sh", "slurm/burn_long.sh", "parallel/burn_all.sh"):
            result = self.call(script, "--help")
            self.assertEqual((result.returncode, result.stderr), (0, ""), script)
            self.assertTrue(result.stdout.startswith(f"usage: {os.path.basename(script)} "), script)

    def test_one_clip_is_burnt_once(self):
        first = self.call("burn_one.sh", "a.ts", CONFIG, "out", *FIXED)
        self.assertEqual((first.returncode, first.stdout, first.stderr), (0, "", ""))
        self.assertEqual(sorted(os.listdir("out")), ["a.ts", "logs", "summaries"])
        with open("out/a.ts", "rb") as ours, open("serial/base0.ts", "rb") as serial:
            self.assertEqual(ours.read(), serial.read())
        self.assertEqual(json.loads(self.read("out/summaries/a.ts.json"))["frames"], 10)
        second = self.call("burn_one.sh", "a.ts", CONFIG, "out", *FIXED)
        self.assertEqual((second.returncode, second.stdout), (0, "a.ts: is done already\n"))

    def test_what_is_older_than_its_clip_is_burnt_again(self):
        self.call("burn_one.sh", "a.ts", CONFIG, "out", *FIXED)
        before = os.stat("out/a.ts").st_ino
        later = os.stat("out/a.ts").st_mtime + 1
        os.utime("a.ts", (later, later))
        self.assertEqual(self.call("burn_one.sh", "a.ts", CONFIG, "out", *FIXED).stdout, "")
        self.assertNotEqual(os.stat("out/a.ts").st_ino, before)

    def test_what_was_cut_by_an_interrupt_is_burnt_again(self):
        self.call("burn_one.sh", "a.ts", CONFIG, "out", *FIXED)
        summary = self.read("out/summaries/a.ts.json")
        with open("out/summaries/a.ts.json", "w") as file:
            file.write(summary.replace('"exitCode": 0', '"exitCode": 130'))
        self.assertEqual(self.call("burn_one.sh", "a.ts", CONFIG, "out", *FIXED).stdout, "")
        self.assertIn('"exitCode": 0', self.read("out/summaries/a.ts.json"))

    def test_leftovers_of_killed_attempts_go(self):
        os.makedirs("out/summaries")
        for name in ("out/.a.ts.part-123", "out/summaries/.a.ts.json.part-123", "out/.b.ts.part-5"):
            with open(name, "w"):
                pass
        self.call("burn_one.sh", "a.ts", CONFIG, "out", *FIXED)
        self.assertEqual(sorted(os.listdir("out")), [".b.ts.part-5", "a.ts", "logs", "summaries"])
        self.assertEqual(os.listdir("out/summaries"), ["a.ts.json"])

    def test_exit_codes_are_those_of_the_burn(self):
        self.assertEqual(self.call("burn_one.sh", "none.ts", CONFIG, "out").returncode, 1)
        usage = self.call("burn_one.sh", "a.ts", CONFIG, "out", "--crf", "-5")
        self.assertEqual(usage.returncode, 2)
        self.assertIn("a.ts: exit code 2: ", usage.stdout)

    def test_endings_and_lines(self):
        with open("list.txt", "w") as file:
            file.write("none.ts\na.ts\n")
        result = self.call("burn_one.sh", "--line", "2", "list.txt", CONFIG, "out", "--video-codec", "ffv1",
                           FLEET_ENDING="mkv")
        self.assertEqual((result.returncode, result.stdout), (0, ""))
        self.assertEqual(sorted(os.listdir("out")), ["a.mkv", "logs", "summaries"])
        told = self.call("summarise.sh", "list.txt", CONFIG, "out", FLEET_ENDING="mkv")
        self.assertEqual(told.returncode, 1)
        self.assertEqual(told.stdout, "2 clips: 1 done, 1 failed\n10 pictures, 0.00 hours of video, 0.00 hours of "
                                      "processor time\n\nnone.ts: was never begun\n")

    def test_refusals_name_the_cure(self):
        files = {"empty.txt": "", "hole.txt": "a.ts\n\nb.ts\n", "twice.txt": "x/a.ts\ny/a.ts\n", "dos.txt": "a.ts\r\n"}
        for name, text in files.items():
            with open(name, "w", newline="") as file:
                file.write(text)
        long_ = "slurm/burn_long.sh"
        rows = [
            (("burn_one.sh", "a.ts", CONFIG), "burn_one.sh: give CLIP, CONFIG and OUT; burn_one.sh --help tells more"),
            (("burn_one.sh", "two\nlines.ts", CONFIG, "out"),
             "burn_one.sh: the clip $'two\\nlines.ts' holds a line feed or another control character; rename it"),
            (("burn_one.sh", "a.ts", "none.json", "out"),
             "burn_one.sh: the configuration 'none.json' is no file that can be read"),
            (("burn_one.sh", "--line", "3", "twice.txt", CONFIG, "out"), "burn_one.sh: twice.txt: has no line 3"),
            (("burn_one.sh", "--line", "x", "twice.txt", CONFIG, "out"),
             "burn_one.sh: --line 'x': give the number of a line"),
            (("summarise.sh", "empty.txt", CONFIG, "out"), "summarise.sh: empty.txt: lists no clip"),
            (("summarise.sh", "twice.txt", CONFIG, "out"),
             "summarise.sh: twice.txt: line 2: 'y/a.ts' would replace the output of line 1; use two lists and folders"),
            (("parallel/burn_all.sh", "hole.txt", CONFIG, "out"), "burn_all.sh: hole.txt: line 2 is empty"),
            (("parallel/burn_all.sh", "dos.txt", CONFIG, "out"),
             "burn_all.sh: dos.txt: line 1 holds a control character: $'a.ts\\r'; rename the clip"),
            (("parallel/burn_all.sh", "--job", "2", "dos.txt", CONFIG, "out"),
             "burn_all.sh: there is no option --job; burn_all.sh --help tells more"),
            (("parallel/burn_all.sh", "--jobs", "0", "dos.txt", CONFIG, "out"), "burn_all.sh: --jobs '0': give a number"),
            (("slurm/burn_array.sh", "none.txt", CONFIG, "out"),
             "burn_array.sh: the list 'none.txt' is no file that can be read"),
            ((long_, "a.ts", CONFIG, "o.ts", "0"), "burn_long.sh: the number of pieces '0': give one from 1 to 9999"),
            ((long_, "a.ts", CONFIG, "o", "2"),
             "burn_long.sh: the output 'o' has no ending that names its container"),
            ((long_, "a.ts", CONFIG, "o.ts", "2", "--from", "1"), "burn_long.sh: --from: the pieces have their own"),
        ]
        for words, message in rows:
            with self.subTest(words=words):
                result = self.call(*words)
                self.assertEqual((result.returncode, result.stdout, result.stderr), (2, "", message + "\n"))
        self.assertFalse(os.path.exists("out"))

    def test_a_program_that_is_not_there(self):
        result = subprocess.run([f"{FLEET}/burn_one.sh", "a.ts", CONFIG, "out"], text=True, stderr=subprocess.PIPE,
                                env=dict(os.environ, FLEET_PROGRAM="/none/overlay"))
        self.assertEqual((result.returncode, result.stderr),
                         (2, "burn_one.sh: /none/overlay is not there; install it, or name it by FLEET_PROGRAM\n"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
