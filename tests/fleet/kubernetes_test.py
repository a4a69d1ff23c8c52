# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""The recipe for Kubernetes against a strict schema of what it uses; and its command, run as a pod would run it."""

import copy
import json
import os
import shutil
import subprocess
import time
import unittest

from fleet_case import CONFIG, FLEET, HERE, PROGRAM, FleetCase, skip_all

try:
    import jsonschema
    import yaml
except ImportError as missing:
    skip_all(f"{missing.name} is not installed (python3-jsonschema, python3-yaml)")

with open(f"{FLEET}/kubernetes/burn-job.yaml") as recipe:
    JOB = yaml.safe_load(recipe)
with open(os.path.join(HERE, "kubernetes_job_schema.json")) as file:
    SCHEMA = json.load(file)


def faults(job):
    found = [error.message for error in jsonschema.Draft201909Validator(SCHEMA).iter_errors(job)]
    # What no schema can say, and the cluster refuses.
    spec = job["spec"]
    most_failures = spec.get("maxFailedIndexes", 0)
    if isinstance(spec["completions"], int) and most_failures > spec["completions"]:
        found.append(f"maxFailedIndexes {most_failures} exceeds completions")
    return found


class KubernetesTest(FleetCase):
    def test_the_recipe_is_valid(self):
        jsonschema.Draft201909Validator.check_schema(SCHEMA)
        self.assertEqual(faults(JOB), [])

    def test_the_schema_sees_mistakes(self):
        def changed(change):
            job = copy.deepcopy(JOB)
            change(job["spec"])
            return faults(job)
        pod = lambda spec: spec["template"]["spec"]
        rows = {
            "a member that does not exist": lambda spec: spec.update(backoffLimitPerindex=3),
            "a number as text": lambda spec: spec.update(completions="60"),
            "more failures than clips": lambda spec: spec.update(maxFailedIndexes=spec["completions"] + 1),
            "restarts in place": lambda spec: pod(spec).update(restartPolicy="OnFailure"),
            "exit codes as texts": lambda spec: spec["podFailurePolicy"]["rules"][1]["onExitCodes"].update(values=["2"]),
            "an action that does not exist": lambda spec: spec["podFailurePolicy"]["rules"][1].update(action="FailPod"),
            "limits of an index without indexes": lambda spec: spec.pop("completionMode"),
            "a variable that is a number": lambda spec: pod(spec)["containers"][0]["env"].append({"name": "N", "value": 1}),
            "two kinds of volume": lambda spec: pod(spec)["volumes"][0].update(emptyDir={}),
        }
        for name, change in rows.items():
            self.assertNotEqual(changed(change), [], name)

    def test_no_number_of_broken_clips_ends_the_others(self):
        self.assertNotIn("maxFailedIndexes", JOB["spec"])

    def test_wrong_usage_is_not_tried_again(self):
        rules = JOB["spec"]["podFailurePolicy"]["rules"]
        codes = [rule["onExitCodes"] for rule in rules if rule["action"] == "FailIndex"]
        self.assertEqual(codes, [{"containerName": "burn", "operator": "In", "values": [2]}])
        self.assertEqual([rule["action"] for rule in rules], ["Ignore", "FailIndex"])
        self.assertEqual(JOB["spec"]["template"]["spec"]["containers"][0]["name"], "burn")

    def test_what_is_mounted_is_there(self):
        pod = JOB["spec"]["template"]["spec"]
        mounted = [mount["name"] for mount in pod["containers"][0]["volumeMounts"]]
        self.assertEqual(sorted(mounted), sorted(volume["name"] for volume in pod["volumes"]))

    def test_its_command_burns_the_clip_of_its_index(self):
        os.chdir(self.folder)
        shutil.copyfile(self.bases[0], "b.ts")
        shutil.copyfile(CONFIG, "overlay.json")
        with open("list.txt", "w") as listed:
            listed.write(f"none.ts\n{self.file('b.ts')}\n")
        container = JOB["spec"]["template"]["spec"]["containers"][0]
        places = {"/usr/share/stanag-overlay/fleet/": FLEET + "/", "/input/": self.folder + "/", "/out": self.file("out")}
        words = container["command"] + container["args"]
        for inside, here in places.items():
            words = [word.replace(inside, here) if " " in word else word for word in words]
        def pod():
            # Its files are new ones in each pod.
            os.utime("overlay.json", (time.time() + 100, time.time() + 100))
            result = subprocess.run(words, env=dict(os.environ, JOB_COMPLETION_INDEX="1", FLEET_PROGRAM=PROGRAM), text=True,
                                    stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            return result.returncode, result.stdout
        self.assertEqual(pod(), (0, ""))
        self.assertEqual(sorted(os.listdir("out")), ["b.ts", "logs", "summaries"])
        self.assertEqual(pod(), (0, "b.ts: is done already\n"))
        told = subprocess.run([f"{FLEET}/summarise.sh", "list.txt", "overlay.json", "out"], stdout=subprocess.PIPE, text=True)
        self.assertIn("2 clips: 1 done, 1 failed\n", told.stdout)


if __name__ == "__main__":
    unittest.main(verbosity=2)
