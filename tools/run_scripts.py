#!/usr/bin/env python3
"""Runs script tests: text files that contain the output expected of them.

A test is a script NAME.mel. The expected output stands at its end, as comments after a line
"// --- prints ---", or "// --- exits with N ---" if the exit code is to be N instead of 0.
The program runs in the test's folder, so that messages name files without a path.

    tools/run_scripts.py PROGRAM FOLDER_OR_FILE...            compares, prints differences
    tools/run_scripts.py --rewrite PROGRAM FOLDER_OR_FILE...  replaces expectations by the output
"""
import argparse
import difflib
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

HEAD = re.compile(r"^// --- (?:prints|exits with (\d+)) ---$", re.M)


def split(text):
    """Returns the script, the output expected of it and its exit code; (text, None, 0) if the file states no
    expectation."""
    head = HEAD.search(text)
    if not head:
        return text, None, 0
    lines = text[head.end() + 1:].split("\n")[:-1]
    return text[:head.start()], "".join(line[3:] + "\n" for line in lines), int(head[1] or 0)


def join(script, printed, code):
    head = "// --- prints ---" if code == 0 else f"// --- exits with {code} ---"
    lines = printed.split("\n")[:-1] if printed.endswith("\n") else printed.split("\n")
    body = "".join(("// " + line).rstrip() + "\n" if line else "//\n" for line in lines)
    return f"{script}{head}\n{body if printed else ''}"


def run(program, path):
    # Into a file: a process that the program leaves running would keep a pipe open.
    with tempfile.TemporaryFile() as out:
        result = subprocess.run(program + [path.name], cwd=path.parent, stdin=subprocess.DEVNULL,
                                stdout=out, stderr=subprocess.STDOUT, timeout=300)
        out.seek(0)
        return out.read().decode("utf-8", "replace"), result.returncode


def check(program, path, rewrite):
    """Runs one test; returns True if it passes or was rewritten."""
    text = path.read_text(encoding="utf-8")
    script, _, _ = split(text)
    printed, code = run(program, path)
    actual = join(script, printed, code)
    if actual == text:
        return True
    if rewrite:
        path.write_text(actual, encoding="utf-8")
        print(f"rewritten: {path}")
        return True
    sys.stdout.writelines(difflib.unified_diff(text.splitlines(True), actual.splitlines(True),
                                               f"{path} (wanted)", f"{path} (printed)"))
    return False


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--rewrite", action="store_true")
    parser.add_argument("program", help="the program and its first arguments, quoted as one word")
    parser.add_argument("paths", nargs="+", type=pathlib.Path)
    options = parser.parse_args()
    program = shlex.split(options.program)
    program[0] = str(pathlib.Path(program[0]).resolve())
    files = []
    for path in options.paths:
        files += sorted(path.glob("*.mel")) if path.is_dir() else [path]
    failed = [path for path in files if not check(program, path.resolve(), options.rewrite)]
    print(f"{len(files) - len(failed)} of {len(files)} scripts behave as written")
    return 1 if failed or not files else 0


if __name__ == "__main__":
    sys.exit(main())
