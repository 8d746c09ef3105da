#!/usr/bin/env python3
"""Checks that the files and folders that documents name exist, and that flags are told."""

import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
QUOTED = re.compile(r"`([\w./{},*-]+)`")
LINKED = re.compile(r"\]\(([^)#:]+)(?:#[^)]*)?\)")


def tracked(pattern):
    return subprocess.run(["git", "ls-files", pattern], cwd=ROOT, check=True, capture_output=True,
                          text=True).stdout.split()


def alternatives(path):
    """a/{b,c}/d as a/b/d and a/c/d."""
    found = re.search(r"\{([^}]*)\}", path)
    if not found:
        return [path]
    return [end for word in found[1].split(",")
            for end in alternatives(path[:found.start()] + word + path[found.end():])]


class Documents(unittest.TestCase):
    def missing(self, pattern, base):
        files = tracked("*")
        folders = {path.split("/")[0] for path in files if "/" in path} - {"build", "out"}
        missing = []
        for document in tracked("*.md"):
            text = re.sub(r"```.*?```", "", (ROOT / document).read_text(), flags=re.S)
            for name in pattern.findall(text):
                for path in alternatives(name):
                    if pattern is QUOTED and (path.split("/")[0] not in folders or "/" not in path
                                              or re.search(r"[A-Z]{4}", path)):
                        continue
                    if not list(base(document).glob(path.rstrip("/") or ".")):
                        missing.append(f"{document}: {path}")
        return missing

    def test_quoted_paths_exist(self):
        self.assertEqual(self.missing(QUOTED, lambda document: ROOT), [])

    def test_linked_files_exist(self):
        self.assertEqual(self.missing(LINKED, lambda document: (ROOT / document).parent), [])

    def test_all_flags_of_the_command_are_told(self):
        flags = re.findall(r'\{"(-\w+)", "(-\w+)",', (ROOT / "plugin/command_flags.h").read_text())
        self.assertGreater(len(flags), 10)
        told = (ROOT / "docs/scripts.md").read_text()
        self.assertEqual([pair for pair in flags if f"`{pair[0]} {pair[1]}`" not in told], [])


if __name__ == "__main__":
    unittest.main()
