#!/usr/bin/env python3
"""Runs the same tests in two builds and compares which ran and which passed.

    tools/compare_tests.py BUILD_A BUILD_B [PROGRAM_OR_SUITE...]
    tools/compare_tests.py --list BUILD     prints the targets to build in BUILD_A before comparing it with BUILD

Takes the test programs and script suites that BUILD_B registers with ctest without the label display;
programs that end in .exe run through tools/with_wine.sh. Exit code 1 if a test fails or is skipped in
either build, or if only one build has it."""

import argparse
import concurrent.futures
import dataclasses
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time

from run_scripts import check

ROOT = pathlib.Path(__file__).resolve().parent.parent
WITH_WINE = ROOT / "tools" / "with_wine.sh"
SUITES = ("language", "scene", "plugin")
# Slow programs run as this many shards, and suites as shards of this many scripts.
PARTS = {"atlas_property_test": 4, "atlas_create_test": 2, "atlas_pack_test": 2}
SCRIPTS_IN_A_PART = 25


@dataclasses.dataclass
class Outcome:
    passed: set
    failed: set
    seconds: float
    said: str = ""


def command_of(program):
    """The command that runs a program of a build; a Windows program runs through Wine."""
    windows = program.with_name(program.name + ".exe")
    return [str(WITH_WINE), str(windows)] if windows.is_file() else [str(program)]


def run_program(build, name, part, parts):
    begin = time.monotonic()
    with tempfile.TemporaryDirectory() as folder:
        environment = dict(os.environ, GTEST_TOTAL_SHARDS=str(parts), GTEST_SHARD_INDEX=str(part))
        log, report = pathlib.Path(folder, "log"), pathlib.Path(folder, "report.json")
        with open(log, "w") as out: # not a pipe: see with_wine.sh
            done = subprocess.run(command_of(build / "bin" / name) + ["--gtest_output=json:report.json"],
                                  cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=out,
                                  stderr=subprocess.STDOUT, timeout=1200)
        said = log.read_text(errors="replace")
        suites = json.loads(report.read_text())["testsuites"] if report.exists() else []
    outcome = Outcome(set(), set(), time.monotonic() - begin)
    for suite in suites:
        for test in suite["testsuite"]:
            good = test["result"] == "COMPLETED" and "failures" not in test
            (outcome.passed if good else outcome.failed).add(f"{suite['name']}.{test['name']}")
    if done.returncode and not outcome.failed:
        outcome.failed.add(f"(ended with {done.returncode})") # a crash, or a program that is missing
    outcome.said = said if outcome.failed else ""
    return outcome


def run_some_scripts(build, scripts):
    begin = time.monotonic()
    outcome = Outcome(set(), set(), 0)
    with tempfile.TemporaryDirectory() as folder:
        console = ["env", f"TESSORA_PREFERENCES={folder}/preferences.mel"] + command_of(build / "bin/script_console")
        for script in scripts:
            (outcome.passed if check(console, script, False) else outcome.failed).add(script.name)
    outcome.seconds = time.monotonic() - begin
    return outcome


def guarded(call, *words):
    """Runs call; if it cannot be run at all, that is a failed test."""
    try:
        return call(*words)
    except (OSError, ValueError, subprocess.SubprocessError) as error:
        return Outcome(set(), {f"({type(error).__name__})"}, 0, f"{error}\n")


def jobs_of(build, name):
    """The calls that run the shards of a program or suite."""
    if name in SUITES:
        scripts = sorted((ROOT / "tests/script" / name).glob("*.mel"))
        return [(run_some_scripts, build, scripts[i:i + SCRIPTS_IN_A_PART])
                for i in range(0, len(scripts), SCRIPTS_IN_A_PART)]
    parts = PARTS.get(name, 1)
    return [(run_program, build, name, part, parts) for part in range(parts)]


def programs_in(build):
    """The test programs that ctest lists for a build, without those that need a display."""
    listing = subprocess.run(["ctest", "--test-dir", str(build), "--show-only=json-v1"], check=True,
                             stdout=subprocess.PIPE, text=True).stdout
    programs = []
    for test in json.loads(listing)["tests"]:
        labels = [label for p in test["properties"] if p["name"] == "LABELS" for label in p["value"]]
        file = pathlib.Path(test["command"][-1])
        if "display" not in labels and file.suffix == ".exe":
            programs.append(file.stem)
    # Longest first, so that no processor idles while a long one finishes.
    return sorted(programs, key=lambda name: -PARTS.get(name, 0))


def merged(outcomes):
    return Outcome(set().union(*(o.passed for o in outcomes)), set().union(*(o.failed for o in outcomes)),
                   sum(o.seconds for o in outcomes), "".join(o.said for o in outcomes))


def complaints(name, builds, outcomes):
    for build, outcome in zip(builds, outcomes):
        if outcome.failed:
            yield f"{name}, {build}: failed: {', '.join(sorted(outcome.failed))}\n{outcome.said}"
        if not outcome.passed:
            yield f"{name}, {build}: no test passed"
    a, b = (outcome.passed | outcome.failed for outcome in outcomes)
    for build, extra in zip(builds, (a - b, b - a)):
        if extra:
            yield f"{name}: only in {build}: {', '.join(sorted(extra))}"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    if sys.argv[1:2] == ["--list"] and len(sys.argv) == 3:
        print("\n".join(programs_in(sys.argv[2]) + ["script_console"]))
        return 0
    parser.add_argument("builds", nargs=2, type=pathlib.Path)
    parser.add_argument("names", nargs="*")
    arguments = parser.parse_args()
    builds = [build.resolve() for build in arguments.builds]
    names = arguments.names or programs_in(builds[1]) + list(SUITES)
    subprocess.run([str(WITH_WINE), "cmd", "/c", "exit"], check=True, stdin=subprocess.DEVNULL) # creates the Wine prefix before tests run in parallel
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        pending = {(name, build): [pool.submit(guarded, *job) for job in jobs_of(build, name)]
                   for name in names for build in builds}
        print(f"| tests | {arguments.builds[0]} | seconds | {arguments.builds[1]} | seconds |\n|---|---|---|---|---|")
        wrong, totals = [], [0, 0]
        for name in names:
            outcomes = [merged([part.result() for part in pending[name, build]]) for build in builds]
            cells = [f"{len(o.passed)} of {len(o.passed) + len(o.failed)} | {o.seconds:.1f}" for o in outcomes]
            print(f"| {name} | " + " | ".join(cells) + " |", flush=True)
            totals = [total + len(outcome.passed) for total, outcome in zip(totals, outcomes)]
            wrong += complaints(name, arguments.builds, outcomes)
    print(f"| all | {totals[0]} | | {totals[1]} | |")
    for line in wrong:
        print(line, file=sys.stderr)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
