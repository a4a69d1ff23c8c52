# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""The recipes for Slurm under a real Slurm of two nodes: broken clips, killed programs, a node that is lost."""

import json
import os
import subprocess
import tempfile
import time
import unittest

from fleet_case import CONFIG, FIXED, FLEET, PROGRAM, FleetCase, overlay, skip_all
from slurm_cluster import Cluster, NotHere


def is_running(number):
    """Whether the process is there and no mere entry that nobody has collected."""
    try:
        with open(f"/proc/{number}/stat") as stat:
            return stat.read().rsplit(")", 1)[1].split()[0] != "Z"
    except OSError:
        return False


def lines_of(words):
    return subprocess.run(words, check=True, stdout=subprocess.PIPE, text=True,
                          stdin=subprocess.DEVNULL).stdout.splitlines()


class SlurmTest(FleetCase):
    def test_every_good_clip_is_done_whatever_happens(self):
        odd = ["two words.ts", "it's $HOME.ts", 'a "quote", a comma.ts', "-dash.ts", "100%.ts", "umlaut ü.ts"]
        killed = [f"killed_{number}.ts" for number in range(5)]
        good = odd + killed + [f"clip_{number:02}.ts" for number in range(42)]
        origin = self.make_clips(good)
        self.make_clips(["always_killed_1.ts"])
        broken = self.make_broken_clips()
        names = sorted(good + ["always_killed_1.ts"] + list(broken))
        self.assertEqual(len(names), 60)
        listed, out = self.write_list(names), self.file("out")

        cluster = self.cluster
        array = subprocess.Popen([f"{FLEET}/slurm/burn_array.sh", "--wait", listed, CONFIG, out, *FIXED],
                                 env=dict(cluster.environment, **self.environment()), text=True,
                                 stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.addCleanup(array.kill)
        held = self.wait_for_half_the_work(out)
        cluster.lose("n2")
        end = time.monotonic() + 10
        while is_running(held):
            self.assertLess(time.monotonic(), end, "the task has outlived its node")
            time.sleep(0.05)
        try:
            told = array.communicate(timeout=150)[0]
        except subprocess.TimeoutExpired:
            self.fail(cluster.run(["squeue", "-a"]).stdout + cluster.logs())

        self.assertEqual(array.returncode, 1, told)
        self.expect_outputs(out, origin)
        self.assertFalse(os.path.exists(self.file("marks/too_late")))
        rows = self.rows(out)
        self.assertEqual(sorted(rows), names)
        for name in good:
            self.assertEqual((rows[name]["result"], rows[name]["exit_code"], rows[name]["reason"]), ("done", "0", ""), name)
            # 10 to 20 pictures, 10 a second.
            self.assertEqual(float(rows[name]["video_seconds"]), int(rows[name]["frames"]) / 10, name)
        for name in killed:
            self.assertEqual(rows[name]["attempts"], "2", name)
        for name, reason in broken.items():
            self.assertEqual((rows[name]["result"], rows[name]["exit_code"], rows[name]["attempts"],
                              rows[name]["reason"]), ("failed", "1", "1", self.file("clips/" + name) + reason))
        always = rows["always_killed_1.ts"]
        self.assertEqual((always["result"], always["exit_code"], always["attempts"], always["reason"]),
                         ("failed", "137", "4", "was killed by signal 9"))
        self.assertIn("60 clips: 53 done, 7 failed\n", told)
        for name, reason in broken.items():
            clip = self.file("clips/" + name)
            self.assertIn(f"\n{clip}: {clip}{reason}\n", told)

    def wait_for_half_the_work(self, out):
        """Until a task stands still on the second node and others have been done; gives that task's process."""
        held = self.file("marks/held")
        end = time.monotonic() + 90
        while not os.path.exists(held) or len(os.listdir(out)) < 20:
            self.assertLess(time.monotonic(), end, self.cluster.run(["squeue", "-a"]).stdout + self.cluster.logs())
            time.sleep(0.1)
        with open(held) as file:
            return int(file.read())

    def test_pieces_of_a_long_clip_are_the_whole(self):
        overlay("sample", self.file("silent.ts"), "--seconds", "10", "--size", "160x120", "--fps", "10")
        clip = self.file("long clip.ts")
        # Sound that begins before the pictures and ends after them.
        subprocess.run(["ffmpeg", "-v", "error", "-i", self.file("silent.ts"), "-f", "lavfi", "-i",
                        "sine=440:duration=10.3", "-map", "0", "-map", "1", "-c", "copy", "-c:a", "aac", clip],
                       check=True, stdin=subprocess.DEVNULL)
        # Without loss, so that pictures decode to what was drawn.
        codec = ["--preset", "ultrafast", "--crf", "0"]
        whole, joined = self.file("whole.ts"), self.file("joined.ts")
        overlay("burn", clip, "-c", CONFIG, "-o", whole, *codec)
        result = self.cluster.run([f"{FLEET}/slurm/burn_long.sh", "--wait", clip, CONFIG, joined, "5", *codec],
                                  environment={"FLEET_PROGRAM": PROGRAM}, timeout=100)
        self.assertEqual(result.returncode, 0, result.stdout + self.cluster.logs())
        self.assertFalse(os.path.exists(joined + ".pieces"))
        for stream, more in (("0:v", []), ("0:a", ["-c", "copy"])):
            with self.subTest(stream=stream):
                def sums(path):
                    return lines_of(["ffmpeg", "-v", "error", "-i", path, "-map", stream, *more, "-f", "framemd5", "-"])
                self.assertGreater(len(sums(whole)), 100)
                self.assertEqual(sums(joined), sums(whole))

        def telemetry(path):
            packets = [json.loads(line) for line in lines_of([PROGRAM, "keys", path])]
            return [(packet["payload"], packet["t"], packet["checksum"]) for packet in packets]
        self.assertEqual(len(telemetry(whole)), 100)
        self.assertEqual(telemetry(joined), telemetry(whole))

    def test_a_piece_that_fails_keeps_the_others(self):
        overlay("sample", self.file("short.ts"), "--seconds", "2", "--size", "160x120", "--fps", "10")
        output = self.file("short_out.ts")
        command = [f"{FLEET}/slurm/burn_long.sh", "--wait", self.file("short.ts"), CONFIG, output, "2"]
        environment = {"FLEET_PROGRAM": PROGRAM, "FLEET_CPUS": "1"}
        result = self.cluster.run(command + ["--video-codec", "nonsense"], environment=environment, timeout=100)
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn("piece 1 is missing: ", result.stdout)
        self.assertIn("piece 2 is missing: ", result.stdout)
        self.assertIn("nonsense", result.stdout)
        self.assertFalse(os.path.exists(output))

    def test_the_script_is_a_job_itself(self):
        names = ["job_1.ts", "job_2.ts"]
        origin = self.make_clips(names)
        with open(self.file("job_list.txt"), "w") as listed:
            listed.writelines(f"clips/{name}\n" for name in names)
        os.symlink(FLEET, self.file("recipes"))
        told = self.cluster.run(["sbatch", "recipes/slurm/burn_array.sh", "job_list.txt", CONFIG, "100% job out", *FIXED],
                                environment={"FLEET_PROGRAM": PROGRAM}, cwd=self.folder)
        self.assertEqual(told.returncode, 0, told.stdout)
        out = self.file("100% job out")
        summary = out + "/summary.txt"
        end = time.monotonic() + 60
        # The job that sums up is there until it has tidied up.
        while not os.path.exists(summary) or self.cluster.run(["squeue", "-h"]).stdout:
            self.assertLess(time.monotonic(), end, self.cluster.run(["squeue", "-a"]).stdout + self.cluster.logs())
            time.sleep(0.1)
        with open(summary) as file:
            self.assertEqual(file.readline(), "2 clips: 2 done, 0 failed\n")
        self.expect_outputs(out, origin)
        # Two tasks and the job that sums up.
        self.assertEqual(len(os.listdir(out + "/logs/slurm")), 3)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.cluster = cls.enterClassContext(Cluster(tempfile.mkdtemp(dir=cls.folder)))


if __name__ == "__main__":
    try:
        with tempfile.TemporaryDirectory() as trial, Cluster(trial):
            pass
    except NotHere as reason:
        skip_all(str(reason))
    unittest.main(verbosity=2)
