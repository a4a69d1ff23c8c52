# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""The recipe for GNU parallel: broken clips, killed programs, and a second run that takes up what was left."""

import os
import shutil
import subprocess
import unittest

from fleet_case import CONFIG, FIXED, FLEET, FleetCase, skip_all


class ParallelTest(FleetCase):
    def burn_all(self, listed, out, *options):
        return subprocess.run([f"{FLEET}/parallel/burn_all.sh", *options, listed, CONFIG, out, *FIXED],
                              env=dict(os.environ, **self.environment()), text=True, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=120)

    def test_every_good_clip_is_done_and_a_second_run_does_the_rest(self):
        good = ["two words.ts", "it's $HOME.ts", 'a "quote".ts', "-dash.ts", "100%.ts", "killed_1.ts", "killed_2.ts"]
        good += [f"clip_{number}.ts" for number in range(5)]
        origin = self.make_clips(good)
        broken = self.make_broken_clips()
        listed, out = self.write_list(good + list(broken)), self.file("out")
        with open(self.file("machines"), "w") as machines:
            machines.write("2/:\n")
        first = self.burn_all(listed, out, "--sshloginfile", self.file("machines"))
        self.assertEqual(first.returncode, 1, first.stdout)
        self.assertIn("18 clips: 12 done, 6 failed\n", first.stdout)
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
        self.assertIn("18 clips: 13 done, 5 failed\n", second.stdout)
        self.expect_outputs(out, {**origin, "folder.ts": "base0.ts"})
        self.assertEqual({name: os.stat(os.path.join(out, name)).st_mtime_ns for name in good}, before)


if __name__ == "__main__":
    if shutil.which("parallel") is None:
        skip_all("GNU parallel is not installed")
    unittest.main(verbosity=2)
