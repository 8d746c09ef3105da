#!/usr/bin/env python3
"""Changes one place of the product at a time and checks that a test fails: a mutant that no test
catches shows behaviour that nothing holds.

    tools/mutants/mutants.py --seed 1 --count 100           draws mutants at random
    tools/mutants/mutants.py --listed                       those of tools/mutants/listed.txt
    tools/mutants/mutants.py --seed 1 --count 5 --folder plugin
    tools/mutants/mutants.py --match 'undo.cpp: assignment: {saved_ = 0; -> ;}'
                                                            those described so, to try a new test
    tools/mutants/mutants.py --seed 1 --count 100 --dry-run prints them only

Works on a copy of the committed tree in build/mutants/tree. A mutant that does not compile, or that gives
the same machine code, is replaced by the next one drawn. Tests are linked and run one at a time, those first
that caught earlier mutants of the same source, until one fails. Of a listed mutant
the list names the test that caught it, so that little has to be built. Survivors that tools/mutants/equivalent.txt
argues to be equivalent are counted apart. Exit code 1 if a listed mutant, or more than a tenth of the drawn
ones, survives.

Operators, each applied to one place of the code:
  relation     < <= > >= == != : to the neighbouring relation, or to its opposite
  logic        && to ||, || to &&
  condition    if (X) to if (!(X))
  arithmetic   + to -, - to +, * to /, / to *; += to -=, -= to +=; ++ to --, -- to ++
  constant     0 to 1, 1 to 0, N to N + 1; true to false, false to true
  status       kSuccess to kFailure; MStatus results are not checked: if (!status) to if (false)
  call         a statement that only calls something is removed
  assignment   a statement that only assigns is removed
  jump         break, continue or a return without a value is removed
"""

import argparse
import collections
import dataclasses
import hashlib
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
sys.path.insert(0, str(HERE.parent))
from cpp_source import code_of, functions  # noqa: E402

FOLDERS = ("plugin", "corelib", "platform", "host/graph")
# The tests of each folder, fastest first: programs, and suites of scripts as script:SUITE.
TESTS = {
    "plugin": ["plugin_test", "plugin_objects_test", "host_plugin_test", "plugin_in_host_test", "draw_seams_test",
               "plugin_overlay_test", "modern_drawing_test", "script:plugin"],
    "corelib": ["corelib_test", "corelib_posix_test", "math_test", "math_device_calls_test",
                "math_whole_stage_test", "plugin_test", "plugin_in_host_test"],
    "platform": ["win32_test", "win32_hook_test", "d3dx9_test", "math_test", "math_device_calls_test",
                 "math_whole_stage_test", "plugin_test", "plugin_in_host_test"],
    "host/graph": ["host_graph_test", "host_api_test", "script:plugin", "host_plugin_test", "script:scene",
                   "plugin_in_host_test", "host_view_test"],
}
SECONDS_A_PROGRAM = 120

RELATIONS = {"<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",),
             "!=": ("==",)}
SWAPS = {"&&": "||", "||": "&&", "+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+=",
         "++": "--", "--": "++"}
SPACED = re.compile(r"(?<=\s)(<=|>=|==|!=|&&|\|\||\+=|-=|<|>|\+|-|\*|/)(?=\s)")
STEP = re.compile(r"\+\+|--")
NUMBER = re.compile(r"(?<![\w.])(\d+)(?![\w.])")
TRUTH = re.compile(r"\b(true|false|kSuccess)\b")
CONDITION = re.compile(r"\bif \(")
UNCHECKED = re.compile(r"if \((!status)\)")
CALL = re.compile(r"^[ \t]+(?:[\w:.]|->|\[\w+\])+\((?:[^;{}]|\n)*\);", re.M)
ASSIGNMENT = re.compile(r"^[ \t]+\*?[\w.>\[\]-]+ [-+*/|&]?= (?:[^;{}]|\n)*;", re.M)
# A failed test of a program, or the first line of a script's difference.
FAILED = re.compile(r"^\[  FAILED  \] ([\w./]+)|^--- (\S+\.mel) ", re.M)
JUMP = re.compile(r"\b(?:break|continue|return);")
OPPOSITES = {"true": "false", "false": "true", "kSuccess": "kFailure"}


@dataclasses.dataclass(frozen=True)
class Mutant:
    path: str
    begin: int
    end: int
    text: str  # the replacement
    operator: str
    test: str = ""  # that is known to catch it, if any

    def describe(self, source):
        line = source.count("\n", 0, self.begin) + 1
        before = " ".join(source[self.begin:self.end].split())
        start = source.rfind("\n", 0, self.begin) + 1
        stop = source.find("\n", self.end)
        context = " ".join((source[start:self.begin] + "{" + before + " -> " + self.text + "}"
                            + source[self.end:stop]).split())
        return f"{self.path}:{line}: {self.operator}: {context}"

    def apply(self, source):
        return source[:self.begin] + self.text + source[self.end:]


def closing_parenthesis(code, begin):
    depth = 0
    for i in range(begin, len(code)):
        depth += {"(": 1, ")": -1}.get(code[i], 0)
        if depth == 0:
            return i
    return None


def mutants_of(path, source):
    """Every mutant of the bodies of a source's functions."""
    code = code_of(source)
    for function in functions(source):
        body = code[function.begin:function.end]

        def at(found, text, operator, group=0):
            return Mutant(path, function.begin + found.start(group), function.begin + found.end(group), text,
                          operator)

        for found in SPACED.finditer(body):
            for text in RELATIONS.get(found[0], ()):
                yield at(found, text, "relation")
            if found[0] in SWAPS:
                yield at(found, SWAPS[found[0]], "logic" if found[0] in ("&&", "||") else "arithmetic")
        for found in STEP.finditer(body):
            yield at(found, SWAPS[found[0]], "arithmetic")
        for found in NUMBER.finditer(body):
            yield at(found, {"0": "1", "1": "0"}.get(found[0], f"{int(found[0]) + 1}"), "constant")
        for found in TRUTH.finditer(body):
            yield at(found, OPPOSITES[found[0]], "status" if found[0] == "kSuccess" else "constant")
        for found in UNCHECKED.finditer(body):
            yield at(found, "false", "status", 1)
        for found in CONDITION.finditer(body):
            begin = function.begin + found.end() - 1
            end = closing_parenthesis(code, begin)
            if end is not None:
                yield Mutant(path, begin + 1, end, f"!({source[begin + 1:end]})", "condition")
        for pattern, operator in ((CALL, "call"), (ASSIGNMENT, "assignment"), (JUMP, "jump")):
            for found in pattern.finditer(body):
                if not found[0].lstrip().startswith(("return", "delete", "const ", "auto ")):
                    yield at(found, ";", operator)


def folder_of(path):
    return next(folder for folder in FOLDERS if path.startswith(folder + "/"))


def sources(folders):
    names = subprocess.run(["git", "ls-files", *folders], cwd=ROOT, check=True, capture_output=True,
                           text=True).stdout.split()
    return [name for name in names if name.endswith(".cpp") and not name.endswith("_win32.cpp")]


def drawn(arguments):
    """All mutants of the chosen folders in a random order that the seed decides."""
    found = []
    for path in sources(arguments.folder or FOLDERS):
        found += mutants_of(path, (ROOT / path).read_text())
    found.sort(key=lambda m: (m.path, m.begin, m.text))
    random.Random(arguments.seed).shuffle(found)
    return found


def listed():
    """The mutants of listed.txt: blocks of path and test, old text and new text, each after its sign."""
    for block in (HERE / "listed.txt").read_text().split("\n@ ")[1:]:
        lines = block.rstrip("\n").split("\n")
        path, test = lines[0].split()
        old = "\n".join(line[2:] for line in lines if line.startswith("- "))
        new = "\n".join(line[2:] for line in lines if line.startswith("+ "))
        source = (ROOT / path).read_text()
        if source.count(old) != 1:
            sys.exit(f"mutants: listed.txt: {path} has {source.count(old)} places with: {old}")
        begin = source.index(old)
        yield Mutant(path, begin, begin + len(old), new, "listed", test)


def matching(mutants, texts):
    found = []
    for mutant in mutants:
        description = without_line(mutant.describe((ROOT / mutant.path).read_text()))
        if any(text in description for text in texts):
            found.append(mutant)
    return found


class Builder:
    """A copy of the committed tree and its build."""

    def __init__(self, arguments):
        self.tree = ROOT / "build/mutants/tree"
        self.build = ROOT / "build/mutants/build"
        self.jobs = arguments.jobs
        self.chosen = arguments.tests
        self.update_tree()
        self.digests = {}  # of the unchanged sources
        self.catches = collections.Counter()  # by source and test
        if not (self.build / "build.ninja").exists():
            # Mutants leave things unused: no warnings. Little optimisation compiles and runs fastest together.
            # Checked containers notice what reads or writes behind their ends.
            subprocess.run(["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja",
                            "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS=-w -D_GLIBCXX_ASSERTIONS",
                            "-DCMAKE_CXX_FLAGS_DEBUG=-O1"],
                           check=True, stdout=subprocess.DEVNULL)

    def update_tree(self):
        """Copies what was committed since the last run, and nothing else, so that little is built again."""
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(f"git archive HEAD | tar -x -C '{folder}'", shell=True, cwd=ROOT, check=True)
            new = {path.relative_to(folder) for path in pathlib.Path(folder).rglob("*") if path.is_file()}
            old = {path.relative_to(self.tree) for path in self.tree.rglob("*") if path.is_file()}
            for path in old - new:
                (self.tree / path).unlink()
            for path in new:
                target = self.tree / path
                if path not in old or target.read_bytes() != (folder / path).read_bytes():
                    target.parent.mkdir(parents=True, exist_ok=True)
                    shutil.copy(folder / path, target)

    def make(self, targets):
        return subprocess.run(["ninja", "-C", self.build, "-j", str(self.jobs), *targets],
                              capture_output=True, text=True)

    def objects_of(self, path):
        """The object files of a source: .../CMakeFiles/TARGET.dir/... at the source's place in the build, seen from
        the target's folder. A source of the plug-in has two, one as it is built with a later kit."""
        found = []
        for file in sorted(self.build.glob(f"**/{pathlib.Path(path).name}.o")):
            parts = file.relative_to(self.build).parts
            cut = parts.index("CMakeFiles")
            place = [".." if part == "__" else part for part in parts[:cut] + parts[cut + 2:]]
            if os.path.normpath(os.path.join(*place)) == path + ".o" and "devkit_guard" not in parts[cut + 1]:
                found.append(file)
        return found

    def digest(self, path):
        """Compiles a source; returns the digest of its machine code, or none if it does not compile."""
        digest = hashlib.sha256()
        for file in self.objects_of(path):
            if self.make([file.relative_to(self.build)]).returncode != 0:
                return None
            code = self.build / "code.o"
            # Debugging information holds line numbers.
            subprocess.run(["objcopy", "--strip-debug", file, code], check=True)
            digest.update(code.read_bytes())
        return digest.hexdigest()

    def digest_unchanged(self, path):
        if path not in self.digests:
            self.digests[path] = self.digest(path)
        return self.digests[path]

    def tests_of(self, folder):
        return [test for test in TESTS[folder] if not self.chosen or test in self.chosen]

    def tests_for(self, mutant):
        """Of the source's folder, the one first that is known to catch it, then those that caught most of its
        mutants so far."""
        return sorted(self.tests_of(folder_of(mutant.path)),
                      key=lambda test: (test != mutant.test, -self.catches[mutant.path, test]))

    def run(self, test):
        """Returns what failed, a program and one of its tests, or none if the program passes."""
        if test.startswith("script:"):
            command = [sys.executable, self.tree / "tools/run_scripts.py",
                       str(self.build / "bin/script_console"), self.tree / "tests/script" / test[7:]]
        else:
            command = [self.build / "bin" / test, "--gtest_brief=1", "--gtest_fail_fast"]
        environment = {"TESSORA_PREFERENCES": str(self.build / "preferences.mel"), "PATH": "/usr/bin:/bin",
                       "GTEST_DEATH_TEST_STYLE": "fast", "HOME": str(self.build)}
        try:
            ended = subprocess.run(command, env=environment, cwd=self.build, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, errors="replace",
                                   timeout=SECONDS_A_PROGRAM)
        except subprocess.TimeoutExpired:
            return f"{test} (too slow)"
        if ended.returncode == 0:
            return None
        found = FAILED.search(ended.stdout)
        return f"{test}, {found[1] or pathlib.Path(found[2]).name}" if found else f"{test} (crashed)"


def targets_of(test):
    return ["script_console"] if test.startswith("script:") else [test]


def judge(builder, mutant):
    """What became of a mutant: "invalid", "caught by TEST" or "survived"."""
    file = builder.tree / mutant.path
    original = file.read_text()
    before = builder.digest_unchanged(mutant.path)
    try:
        file.write_text(mutant.apply(original))
        if builder.digest(mutant.path) in (None, before):
            return "invalid"
        for test in builder.tests_for(mutant):
            failed = builder.run(test) if builder.make(targets_of(test)).returncode == 0 else f"building {test}"
            if failed:
                builder.catches[mutant.path, test] += 1
                return f"caught by {failed}"
        return "survived"
    finally:
        file.write_text(original)


def check_clean(builder, tests):
    """Ends the program if a test fails without any mutant."""
    done = builder.make([target for test in tests for target in targets_of(test)])
    if done.returncode != 0:
        sys.exit("mutants: the tree does not build:\n" + done.stdout[-3000:])
    failing = list(filter(None, map(builder.run, tests)))
    if failing:
        sys.exit(f"mutants: these fail without any mutant: {', '.join(failing)}")


def equivalent():
    """The survivors that are argued: their descriptions without the line number."""
    lines = (HERE / "equivalent.txt").read_text().splitlines()
    return {line for line in lines if line and not line.startswith(("#", "  "))}


def without_line(description):
    return re.sub(r":\d+:", ":", description, count=1)


def run(arguments, mutants, wanted):
    builder = Builder(arguments)
    if arguments.listed:
        tests = [mutant.test for mutant in mutants]
    else:
        tests = [test for folder in arguments.folder or FOLDERS for test in builder.tests_of(folder)]
    check_clean(builder, list(dict.fromkeys(tests)))
    argued, counts, survivors = equivalent(), {"caught": 0, "argued": 0, "survived": 0}, []
    began = time.monotonic()
    for number, mutant in enumerate(mutants, arguments.skip + 1):
        if sum(counts.values()) >= wanted:
            break
        description = mutant.describe((ROOT / mutant.path).read_text())
        verdict = judge(builder, mutant)
        if verdict == "invalid":
            if arguments.listed:
                sys.exit(f"mutants: does not compile: {description}")
            continue
        if verdict == "survived" and without_line(description) in argued:
            verdict = "argued to be equivalent"
        counts[verdict.split()[0]] += 1
        if verdict == "survived":
            survivors.append(description)
        print(f"{number:4} {time.monotonic() - began:6.0f} s  {verdict}: {description}", flush=True)
    print(f"\n| mutants | caught | argued equivalent | survived |\n|---|---|---|---|\n"
          f"| {sum(counts.values())} | {counts['caught']} | {counts['argued']} | {counts['survived']} |")
    for description in survivors:
        print(f"survived: {description}")
    return len(survivors) > (0 if arguments.listed else wanted // 10)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--count", type=int, default=100, help="mutants to judge")
    parser.add_argument("--skip", type=int, default=0, help="drawn mutants to leave out, to go on after a run")
    parser.add_argument("--folder", action="append", choices=FOLDERS, help="may be given several times")
    parser.add_argument("--tests", action="append", help="run only this program or script:SUITE; several times")
    parser.add_argument("--listed", action="store_true")
    parser.add_argument("--match", action="append", help="only mutants whose description without line number"
                        " contains this text; several times")
    parser.add_argument("--dry-run", action="store_true")
    parser.add_argument("--jobs", type=int, default=2, help="compile jobs")
    arguments = parser.parse_args()
    mutants = list(listed()) if arguments.listed else drawn(arguments)[arguments.skip:]
    if arguments.match:
        mutants = matching(mutants, arguments.match)
        arguments.count = len(mutants)
    wanted = len(mutants) if arguments.listed else arguments.count
    if arguments.dry_run:
        for mutant in mutants[:wanted]:
            print(mutant.describe((ROOT / mutant.path).read_text()))
        print(f"{len(mutants)} mutants in all")
        return 0
    return 1 if run(arguments, mutants, wanted) else 0


if __name__ == "__main__":
    sys.exit(main())
