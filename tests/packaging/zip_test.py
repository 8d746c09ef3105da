#!/usr/bin/env python3
"""Makes the .zip of a Windows build and tests it in a folder of another name.

    zip_test.py BUILD CPACK CMAKE WITH_WINE TOOLCHAIN [unittest arguments]

DISPLAY must name an X server with OpenGL."""

import os
import pathlib
import sys
import tempfile
import unittest

from strangers import run, unpack_one, use_engine, use_program

BUILD, CPACK, CMAKE, WINE, TOOLCHAIN = sys.argv[1:6]
DLLS_OF_THE_SYSTEM = {"advapi32.dll", "d3d9.dll", "d3dx9_43.dll", "gdi32.dll", "kernel32.dll", "msvcrt.dll",
                      "opengl32.dll", "psapi.dll", "shell32.dll", "user32.dll", "ws2_32.dll"}


class Zip(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.holder = tempfile.TemporaryDirectory()
        folder = pathlib.Path(cls.holder.name)
        done = run(CPACK, "-B", folder / "packages", cwd=BUILD)
        if done.returncode:
            raise AssertionError(done.stdout + done.stderr)
        cls.root = unpack_one(folder / "packages", "*.zip", folder / "another place", CMAKE)

    @classmethod
    def tearDownClass(cls):
        cls.holder.cleanup()

    def test_program_runs_from_any_folder(self):
        use_program(self, [WINE, self.root / "tessora.exe"], dict(os.environ))

    def test_another_project_builds_against_the_packaged_engine(self):
        use_engine(self, self.root, CMAKE, lambda folder: [WINE, folder / "consumer.exe"],
                   f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}", f"-DCMAKE_FIND_ROOT_PATH={self.root}")

    def test_archive_contains_host_plugin_and_scripts(self):
        names = {path.relative_to(self.root).as_posix() for path in self.root.rglob("*")}
        self.assertLessEqual({"tessora.exe", "tessora.mll", "tessora_host.dll", "tessora_d3dx9.dll",
                              "scripts/tessoraCreateUI.mel", "include/tessora/atlas/atlas.h"}, names)

    def test_modules_depend_on_each_other_and_the_system_only(self):
        own = {path.name.lower() for path in self.root.iterdir()}
        for module in self.root.iterdir():
            if module.suffix not in (".exe", ".dll", ".mll"):
                continue
            listing = run("x86_64-w64-mingw32-objdump", "-p", module).stdout
            needed = {line.split()[-1].lower() for line in listing.splitlines() if "DLL Name:" in line}
            self.assertTrue(needed, module)
            self.assertLessEqual(needed - own, DLLS_OF_THE_SYSTEM, module)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[6:]])
