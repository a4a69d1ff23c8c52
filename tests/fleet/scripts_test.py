# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""The scripts of fleet/ without an engine: one clip, what is refused and in which words, what shellcheck says."""

import glob
import json
import os
import shutil
import subprocess
import unittest

from fleet_case import CONFIG, FIXED, FLEET, PROGRAM, SOURCE, FleetCase

SCRIPTS = sorted(glob.glob(f"{FLEET}/**/*.sh", recursive=True))


class ScriptsTest(FleetCase):
    def call(self, script, *words, **environment):
        return subprocess.run([f"{FLEET}/{script}", *words], text=True, stdin=subprocess.DEVNULL, cwd=self.folder,
                              env={**os.environ, "FLEET_PROGRAM": PROGRAM, **environment},
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

    def test_former_bug_a_configuration_counts_by_what_it_says(self):
        shutil.copyfile(CONFIG, "config.json")
        self.call("burn_one.sh", "a.ts", "config.json", "out", *FIXED)
        later = os.stat("out/a.ts").st_mtime + 1
        os.utime("config.json", (later, later))
        self.assertEqual(self.call("burn_one.sh", "a.ts", "config.json", "out").stdout, "a.ts: is done already\n")
        with open("list.txt", "w") as file:
            file.write("a.ts\n")
        self.assertEqual(self.call("summarise.sh", "list.txt", "config.json", "out").returncode, 0)
        with open("config.json", "a") as file:
            file.write("\n")
        os.utime("config.json", (1, 1))
        told = self.call("summarise.sh", "list.txt", "config.json", "out")
        self.assertEqual(told.returncode, 1)
        self.assertTrue(told.stdout.endswith(
            "\na.ts: its output is gone, older than the clip, or made with another configuration\n"), told.stdout)
        self.assertEqual(self.call("burn_one.sh", "a.ts", "config.json", "out", *FIXED).stdout, "")

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
        self.assertEqual(sorted(os.listdir("out/summaries")), ["a.ts.configuration", "a.ts.json"])

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

    def make_slurm_stubs(self, *, script="none"):
        """An sbatch that only notes its words; gives the environment that has it."""
        shutil.rmtree("stubs", ignore_errors=True)
        os.makedirs("stubs")
        texts = {"sbatch": """(IFS=$'\\t'; echo "$*" >>"$CALLS"; env >"${CALLS%/*}/environment")
                              [ -z "${SBATCH_FAILS:-}" ] || exit 1
                              wc -l <"$CALLS\"""",
                 "scontrol": f"""case $* in
                                   "show config") echo "MaxArraySize            = 3" ;;
                                   "show job 7") echo "   Command={script} list.txt c out" ;;
                                   *) exit 1 ;;
                                 esac"""}
        for name, text in texts.items():
            with open("stubs/" + name, "w") as file:
                file.write("#!/bin/bash\n" + text + "\n")
            os.chmod("stubs/" + name, 0o755)
        return {"PATH": self.file("stubs") + ":" + os.environ["PATH"], "CALLS": self.file("stubs/calls")}

    def submitted(self):
        return [line.split("\t") for line in self.read("stubs/calls").splitlines()]

    def write_three(self):
        with open("list.txt", "w") as file:
            file.write("a.ts\nb.ts\nc.ts\n")

    def test_former_bug_so_many_at_once_holds_for_lists_of_many_arrays(self):
        self.write_three()
        result = self.call("slurm/burn_array.sh", "--at-once", "2", "list.txt", CONFIG, "100% out", **self.make_slurm_stubs())
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        first, second, summary = self.submitted()
        self.assertIn("--array=1-2%2", first)
        self.assertEqual([word for word in first if word.startswith("--dependency")], [])
        self.assertIn("--array=1-1%2", second)
        self.assertIn("--dependency=afterany:1", second)
        self.assertIn("--dependency=afterany:1:2", summary)
        # Slurm replaces what follows a single sign of percent.
        logs = f"--output={self.folder}/100%% out/logs/slurm/"
        self.assertIn(logs + "%A_%a.log", first)
        self.assertIn(logs + "summary_%j.log", summary)

    def test_arrays_without_a_limit_do_not_wait_for_each_other(self):
        self.write_three()
        self.call("slurm/burn_array.sh", "list.txt", CONFIG, "out", **self.make_slurm_stubs())
        self.assertEqual([[word for word in call if word.startswith("--dependency")] for call in self.submitted()],
                         [[], [], ["--dependency=afterany:1:2"]])

    def test_the_script_given_to_sbatch_finds_its_folder(self):
        self.write_three()
        os.makedirs("spool/job00007", exist_ok=True)
        shutil.copy(f"{FLEET}/slurm/burn_array.sh", "spool/job00007/slurm_script")
        known = {"FLEET_HOME": {"FLEET_HOME": FLEET}, "its job": {"SLURM_JOB_ID": "7"},
                 "where it was submitted": {"SLURM_JOB_ID": "8", "SLURM_SUBMIT_DIR": SOURCE}}
        for name, variables in known.items():
            with self.subTest(name):
                stubs = self.make_slurm_stubs(script=f"{FLEET}/slurm/burn_array.sh")
                environment = {**os.environ, "FLEET_PROGRAM": PROGRAM, **stubs, **variables}
                words = ["bash", "spool/job00007/slurm_script", "list.txt", CONFIG, "out"]
                result = subprocess.run(words, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
                self.assertEqual(result.returncode, 0, result.stdout)
                self.assertNotIn("SLURM_JOB_ID=", self.read("stubs/environment"), "the tasks are no part of this job")
                self.assertEqual([call[call.index(f"{FLEET}/slurm/array_task.sh") + 1] for call in self.submitted()[:2]],
                                 [self.file("out/clips.txt")] * 2)
        with self.subTest("nobody knows"):
            result = subprocess.run(words, env={**os.environ, "FLEET_PROGRAM": PROGRAM, **self.make_slurm_stubs()},
                                    stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            self.assertEqual((result.returncode, result.stdout),
                             (2, "burn_array.sh: set FLEET_HOME to the folder that holds lib.sh and the folder slurm of "
                                 "this script\n"))

    def burn_long(self, pieces, **environment):
        return self.call("slurm/burn_long.sh", "a.ts", CONFIG, self.file("long.ts"), pieces, **environment)

    def test_former_bug_a_folder_of_the_user_is_not_removed(self):
        os.makedirs("long.ts.pieces")
        self.addCleanup(shutil.rmtree, self.file("long.ts.pieces"))
        with open("long.ts.pieces/mine", "w"):
            pass
        result = self.burn_long("2", **self.make_slurm_stubs())
        self.assertEqual((result.returncode, result.stderr),
                         (2, f"burn_long.sh: {self.folder}/long.ts.pieces is needed for the pieces and holds something "
                             "else; rename it\n"))
        self.assertEqual(os.listdir("long.ts.pieces"), ["mine"])
        self.assertFalse(os.path.exists("stubs/calls"))

    def test_former_bug_pieces_of_another_cut_go_when_others_are_submitted(self):
        stubs = self.make_slurm_stubs()
        self.addCleanup(shutil.rmtree, self.file("long.ts.pieces"))
        self.assertEqual(self.burn_long("2", **stubs).returncode, 0)
        with open("long.ts.pieces/piece-0001.ts", "w"):
            pass
        self.assertEqual(self.burn_long("3", SBATCH_FAILS="yes", **stubs).returncode, 1)
        self.assertTrue(os.path.exists("long.ts.pieces/piece-0001.ts"))
        self.assertTrue(self.read("long.ts.pieces/plan").startswith("2 pieces of "))
        self.assertEqual(self.burn_long("2", **stubs).returncode, 0)
        self.assertTrue(os.path.exists("long.ts.pieces/piece-0001.ts"))
        self.assertEqual(self.burn_long("3", **stubs).returncode, 0)
        self.assertEqual(sorted(os.listdir("long.ts.pieces")), ["cuts", "ending", "logs", "plan"])
        self.assertEqual([name for name in os.listdir() if "outdated" in name], [])

    def test_former_bug_pieces_have_no_ending_of_clips(self):
        stubs = self.make_slurm_stubs()
        self.addCleanup(shutil.rmtree, self.file("long.ts.pieces"))
        with open("stubs/sbatch", "w") as file:
            file.write('#!/bin/sh\necho "${FLEET_ENDING-unset}" >>"$CALLS"\necho 1\n')
        self.assertEqual(self.burn_long("2", FLEET_ENDING="mkv", **stubs).returncode, 0)
        self.assertEqual(self.submitted(), [["unset"], ["unset"]])

    def test_former_bug_killed_pieces_have_a_reason(self):
        os.makedirs("long.ts.pieces/logs")
        self.addCleanup(shutil.rmtree, self.file("long.ts.pieces"))
        files = {"ending": "ts\n", "cuts": "1.000\n2.000\n",
                 "logs/piece-0001.ts.log": "== 2026-01-01T00:00:00Z on n1\n== exit code 137\n",
                 "logs/piece-0002.ts.log": "== 2026-01-01T00:00:00Z on n1\nstanag-overlay: warned\n"}
        for name, text in files.items():
            with open("long.ts.pieces/" + name, "w") as file:
                file.write(text)
        result = self.call("slurm/join_pieces.sh", "long.ts.pieces", "long.ts", FLEET_HOME=FLEET)
        self.assertEqual((result.returncode, result.stderr),
                         (1, "piece 1 is missing: was killed by signal 9\n"
                             "piece 2 is missing: was killed with its job or its node\n"
                             "piece 3 is missing: was never begun\n"))

    def test_missing_engines_are_failures_where_they_are_required(self):
        words = ["python3", "-B", "-c", "import fleet_case; fleet_case.skip_all('no engine')"]
        codes = []
        for required in ({}, {"OVERLAY_ENGINES": "required"}):
            environment = {name: value for name, value in os.environ.items() if name != "OVERLAY_ENGINES"}
            codes.append(subprocess.run(words, cwd=os.path.dirname(os.path.abspath(__file__)), env={**environment, **required},
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode)
        self.assertEqual(codes, [77, 1])

    def test_a_program_that_is_not_there(self):
        result = subprocess.run([f"{FLEET}/burn_one.sh", "a.ts", CONFIG, "out"], text=True, stderr=subprocess.PIPE,
                                env=dict(os.environ, FLEET_PROGRAM="/none/overlay"))
        self.assertEqual((result.returncode, result.stderr),
                         (2, "burn_one.sh: /none/overlay is not there; install it, or name it by FLEET_PROGRAM\n"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
