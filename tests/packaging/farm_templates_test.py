#!/usr/bin/env python3
"""The templates for farms: their form, and that the program has the options they use.
farm_templates_test.py PROGRAM PACKAGING_FOLDER"""

import json
import pathlib
import re
import subprocess
import sys
import unittest

PROGRAM, PACKAGING = sys.argv.pop(1), pathlib.Path(sys.argv.pop(1))


def options_of(command):
    text = subprocess.run([PROGRAM, command, "--help"], check=True, capture_output=True, text=True).stdout
    return set(re.findall(r"^  (?:-\w, )?(--\w+)", text, re.M))


class OpenJobDescription(unittest.TestCase):
    """Form: the Open Job Description specification, "How jobs are constructed", template schemas of 2023-09."""

    def setUp(self):
        self.template = json.loads((PACKAGING / "openjd/tessora_unwrap.json").read_text())

    def test_required_keys_are_there_and_no_unknown_ones(self):
        self.assertEqual(self.template["specificationVersion"], "jobtemplate-2023-09")
        self.assertLessEqual(set(self.template), {"specificationVersion", "name", "description", "steps",
                                                  "parameterDefinitions", "jobEnvironments", "$schema"})
        self.assertTrue(0 < len(self.template["name"]) <= 128)
        for parameter in self.template["parameterDefinitions"]:
            self.assertRegex(parameter["name"], r"^[A-Za-z_]\w{0,63}$")
            self.assertIn(parameter["type"], ("STRING", "INT", "FLOAT", "PATH"))
        for step in self.template["steps"]:
            self.assertLessEqual(set(step), {"name", "description", "script", "parameterSpace", "dependencies",
                                             "stepEnvironments", "hostRequirements"})
            action = step["script"]["actions"]["onRun"]
            self.assertLessEqual(set(action), {"command", "args", "timeout", "cancelation"})
            self.assertTrue(action["command"])
            for definition in step.get("parameterSpace", {}).get("taskParameterDefinitions", []):
                self.assertLessEqual({"name", "type", "range"}, set(definition))

    def test_references_lead_to_parameters_and_steps(self):
        names = {f"Param.{p['name']}" for p in self.template["parameterDefinitions"]}
        steps = [step["name"] for step in self.template["steps"]]
        for step in self.template["steps"]:
            own = {f"Task.Param.{d['name']}"
                   for d in step.get("parameterSpace", {}).get("taskParameterDefinitions", [])}
            for used in re.findall(r"{{\s*([\w.]+)\s*}}", json.dumps(step)):
                self.assertIn(used, names | own)
            for dependency in step.get("dependencies", []):
                self.assertIn(dependency["dependsOn"], steps[:steps.index(step["name"])])

    def test_program_has_the_options(self):
        for step in self.template["steps"]:
            action = step["script"]["actions"]["onRun"]
            self.assertEqual(action["command"], "tessora")
            used = {word for word in action["args"] if word.startswith("--")}
            self.assertLessEqual(used, options_of(action["args"][0]))


class Slurm(unittest.TestCase):
    def test_scripts_are_valid_and_use_options_that_exist(self):
        for name in ("unwrap_array.sh", "unwrap_parallel.sh"):
            path = PACKAGING / "slurm" / name
            subprocess.run(["bash", "-n", str(path)], check=True)
            call = path.read_text().split("tessora unwrap \"")[1]
            self.assertLessEqual(set(re.findall(r"--\w+", call)), options_of("unwrap"), name)


if __name__ == "__main__":
    unittest.main()
