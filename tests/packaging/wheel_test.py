#!/usr/bin/env python3
"""Builds the Python wheel without a network from the sources that it needs, installs it into an empty environment
and uses it in an empty folder: wheel_test.py PYTHON [unittest arguments]"""

import os
import pathlib
import shutil
import sys
import tempfile
import unittest
import zipfile

from strangers import run

PYTHON = sys.argv[1]
ROOT = pathlib.Path(__file__).resolve().parents[2]
SOURCES = ("CMakeLists.txt", "pyproject.toml", "setup.py", "LICENSE", "docs/python.md", "cmake", "polygon", "atlas",
           "measure", "python")
PROGRAM = """import tessora
vmapping, indices, uvs = tessora.parametrize([[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0]], [[0, 1, 2], [0, 2, 3]])
print(len(vmapping), indices.tolist(), uvs.dtype, tessora.__file__)
"""


class Wheel(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.holder = tempfile.TemporaryDirectory()
        cls.folder = pathlib.Path(cls.holder.name)
        source = cls.folder / "source"
        for name in SOURCES:
            target = source / name
            target.parent.mkdir(parents=True, exist_ok=True)
            if (ROOT / name).is_dir():
                shutil.copytree(ROOT / name, target, ignore=shutil.ignore_patterns("__pycache__"))
            else:
                shutil.copy(ROOT / name, target)
        done = run(PYTHON, "-m", "pip", "wheel", ".", "--no-build-isolation", "--no-deps", "--no-index", "-w", "..",
                   cwd=source)
        if done.returncode:
            raise AssertionError(done.stdout[-3000:] + done.stderr[-3000:])
        cls.wheel, = cls.folder.glob("tessora-*.whl")

    @classmethod
    def tearDownClass(cls):
        cls.holder.cleanup()

    def test_wheel_installs_and_works_in_an_empty_folder(self):
        empty = self.folder / "empty"
        empty.mkdir()
        # numpy comes from the system, since there is no network.
        run(PYTHON, "-m", "venv", "--system-site-packages", self.folder / "venv").check_returncode()
        python = self.folder / "venv/bin/python"
        done = run(python, "-m", "pip", "install", "--no-index", self.wheel, cwd=empty)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        done = run(python, "-c", PROGRAM, cwd=empty, env={"PATH": os.environ["PATH"]})
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertRegex(done.stdout, r"^4 \[\[.*\]\] float32 .*venv/lib/")

    def test_wheel_holds_stubs_marker_and_licences(self):
        names = zipfile.ZipFile(self.wheel).namelist()
        for name in ("tessora/__init__.py", "tessora/__init__.pyi", "tessora/py.typed"):
            self.assertIn(name, names)
        self.assertTrue(any(name.endswith("/LICENSE") for name in names), names)
        self.assertTrue(any("_engine" in name for name in names), names)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
