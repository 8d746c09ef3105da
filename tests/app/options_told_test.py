#!/usr/bin/env python3
"""Every option of the built program is in the documents and in a test: options_told_test.py PROGRAM

Manual pages and completion are compared with --help by manual_test.py."""

import pathlib
import re
import subprocess
import sys
import unittest

PROGRAM = str(pathlib.Path(sys.argv.pop(1)).resolve())
ROOT = pathlib.Path(__file__).resolve().parents[2]
COMMON = {"--help"}


def output(*words):
    return subprocess.run(words, check=True, capture_output=True, text=True).stdout


def options():
    """Of --help: [(command, --name)]."""
    listed = output(PROGRAM, "--help").split("commands:\n")[1].split("\n\n")[0]
    for command in {line.split()[0] for line in listed.splitlines()} - {"manual", "completion"}:
        for name in re.findall(r"^  (?:-\w, )?(--\w+)", output(PROGRAM, command, "--help"), re.M):
            if name not in COMMON:
                yield command, name


def texts(folder, suffixes):
    return [path.read_text(errors="replace") for path in sorted((ROOT / folder).rglob("*"))
            if path.suffix in suffixes and path != pathlib.Path(__file__).resolve()]


def untold(pages, names_command):
    """The options that no page tells of among those that name the command."""
    missing = []
    for command, name in options():
        whole = re.compile(re.escape(name) + r"(?![\w-])")
        if not any(whole.search(page) and names_command(page, command) for page in pages):
            missing.append(f"{command} {name}")
    return missing


class Options(unittest.TestCase):
    def test_every_option_is_in_the_documents(self):
        pages = texts("docs", {".md"})
        self.assertGreater(len(list(options())), 90)
        self.assertEqual(untold(pages, lambda page, command: f"tessora {command}" in page), [])

    def test_every_option_is_in_a_test(self):
        pages = texts("tests", {".cpp", ".py"})
        self.assertEqual(untold(pages, lambda page, command: re.search(rf"\b{command}\b", page)), [])


if __name__ == "__main__":
    unittest.main()
