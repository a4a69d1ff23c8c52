# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""The recipe for GNU parallel: broken clips, killed programs, and a second run that takes up what was left."""

import os
import shutil
import subprocess
import unittest

from fleet_case import CONFIG, FIXED, FLEET, FleetCase, skip_all

# Burns nothing: burn CLIP -c CONFIG -o OUTPUT --summary SUMMARY ...
STUB = """#!/bin/sh
echo "${2##*/}" >>"$CALLS"
cat "$2" "$4" >"$6"
printf '{\\n  "exitCode": 0,\\n  "frames": 1\\n}\\n' >"$8"
"""


class ParallelTest(FleetCase):
    def burn_all(self, listed, out, *options):
        return subprocess.run([f"{FLEET}/parallel/burn_all.sh", *options, listed, CONFIG, out, *FIXED],
                              env=dict(os.environ, **self.environment()), text=True, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=120)

    def test_every_good_clip_is_done_and_a_second_run_does_the_rest(self):
        good = ["two words.ts", "it's $HOME.ts", 'a "quote".ts', "-dash.ts", "100%.ts", "killed_1.ts", "killed_2.ts"]
        good += [f"clip_{number:02}.ts" for number in range(47)]
        origin = self.make_clips(good)
        broken = self.make_broken_clips()
        listed, out = self.write_list(good + list(broken)), self.file("out")
        with open(self.file("machines"), "w") as machines:
            machines.write("2/:\n")
        first = self.burn_all(listed, out, "--sshloginfile", self.file("machines"))
        self.assertEqual(first.returncode, 1, first.stdout)
        self.assertIn("60 clips: 54 done, 6 failed\n", first.stdout)
        self.assertFalse(os.path.exists(self.file("marks/too_late")))
        self.expect_outputs(out, origin)
        rows = self.rows(out)
        self.assertEqual({name: row["result"] for name, row in rows.items()},
                         {**dict.fromkeys(good, "done"), **dict.fromkeys(broken, "failed")})
        for name, reason in broken.items():
            clip = self.file("clips/" + name)
            self.assertEqual((rows[name]["attempts"], rows[name]["reason"]), ("3", clip + reason))
            self.assertIn(f"\n{clip}: {clip}{reason}\n", first.stdout)
        for name in good:
            self.assertEqual(rows[name]["attempts"], "2" if name.startswith("killed") else "1", name)

        before = {name: os.stat(os.path.join(out, name)).st_mtime_ns for name in good}
        os.rmdir(self.file("clips/folder.ts"))
        shutil.copyfile(self.bases[0], self.file("clips/folder.ts"))
        second = self.burn_all(listed, out)
        self.assertIn("60 clips: 55 done, 5 failed\n", second.stdout)
        self.expect_outputs(out, {**origin, "folder.ts": "base0.ts"})
        self.assertEqual({name: os.stat(os.path.join(out, name)).st_mtime_ns for name in good}, before)

    def test_former_bugs_after_a_success_what_changed_is_done_again(self):
        os.chdir(self.folder)
        with open("stub", "w") as stub:
            stub.write(STUB)
        os.chmod("stub", 0o755)
        self.write("one.ts", "one"), self.write("two.ts", "two")
        self.write("list", "one.ts\ntwo.ts\n"), self.write("config", "A")

        def burns(**more):
            """The clips that a run burns; all are done then."""
            self.write("calls", "")
            result = subprocess.run([f"{FLEET}/parallel/burn_all.sh", "list", "config", "made"], text=True,
                                    env=dict(os.environ, FLEET_PROGRAM=self.file("stub"), CALLS=self.file("calls"), **more),
                                    stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            self.assertEqual(result.returncode, 0, result.stdout)
            self.assertIn("2 clips: 2 done, 0 failed\n", result.stdout)
            with open("calls") as calls:
                return sorted(calls.read().split())
        later = os.stat("one.ts").st_mtime + 100

        self.assertEqual(burns(), ["one.ts", "two.ts"])
        self.assertEqual(burns(), [])
        os.utime("config", (later, later))
        self.assertEqual(burns(), [], "a configuration that says the same")
        self.write("config", "B")
        self.assertEqual(burns(), ["one.ts", "two.ts"], "another configuration")
        self.write("config", "A")
        self.assertEqual(burns(), ["one.ts", "two.ts"], "the first configuration again")
        os.unlink("made/two.ts")
        self.assertEqual(burns(), ["two.ts"], "an output that is gone")
        self.assertEqual(burns(FLEET_ENDING="mkv"), ["one.ts", "two.ts"], "another ending")
        self.assertEqual(burns(FLEET_ENDING="mkv"), [])
        self.assertEqual(burns(), [])
        before = os.stat("made/one.ts").st_mtime
        os.utime("made/one.ts", (before - 100, before - 100))
        self.assertEqual(burns(), ["one.ts"], "a newer clip")
        self.assertEqual(burns(), [])

    def write(self, name, text):
        with open(self.file(name), "w") as file:
            file.write(text)


if __name__ == "__main__":
    if shutil.which("parallel") is None:
        skip_all("GNU parallel is not installed")
    unittest.main(verbosity=2)
