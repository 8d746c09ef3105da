#!/usr/bin/env python3
"""Makes the packages of a build and uses them as strangers would.

    packages_test.py BUILD CPACK CMAKE [unittest arguments]

The Debian package is unpacked into an empty root, the .tar.gz into a folder of another name; in each a
script makes, unwraps and exports a mesh and the program unwraps that export. The engine's part is used by
a build of its own."""

import os
import pathlib
import sys
import tempfile
import unittest

from strangers import run, use_engine, use_program

BUILD, CPACK, CMAKE = sys.argv[1:4]


class Packages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.holder = tempfile.TemporaryDirectory()
        cls.folder = pathlib.Path(cls.holder.name)
        done = run(CPACK, "-B", cls.folder / "packages", cwd=BUILD)
        if done.returncode:
            raise AssertionError(done.stdout + done.stderr)
        cls.deb, = (cls.folder / "packages").glob("*.deb")
        cls.tar, = (cls.folder / "packages").glob("*.tar.gz")
        cls.root, cls.moved = cls.folder / "root", cls.folder / "another place"
        cls.moved.mkdir()
        run("dpkg", "-x", cls.deb, cls.root).check_returncode()
        run("tar", "-xzf", cls.tar, "-C", cls.moved, "--strip-components=1").check_returncode()

    @classmethod
    def tearDownClass(cls):
        cls.holder.cleanup()

    def use(self, prefix):
        # Nothing of the build may be in reach, nor anything that this user has set.
        use_program(self, [prefix / "bin" / "tessora"],
                    {name: os.environ[name] for name in ("PATH", "HOME") if name in os.environ})

    def test_debian_package_runs_from_its_root(self):
        self.use(self.root / "usr")

    def test_archive_runs_where_it_is_unpacked(self):
        self.use(self.moved)

    def test_no_library_is_taken_from_the_build(self):
        for module in (self.moved / "lib" / "tessora").iterdir():
            done = run("readelf", "-d", module)
            self.assertNotIn(BUILD, done.stdout, module)

    def test_debian_package_names_what_it_needs(self):
        done = run("dpkg", "-f", self.deb, "Package", "Version", "Architecture", "Depends")
        self.assertIn("Package: tessora", done.stdout)
        self.assertRegex(done.stdout, r"Depends: .*libc6 .*libstdc\+\+6")

    def test_scripts_are_shipped(self):
        shipped = {path.name for path in (self.moved / "share/tessora/scripts").glob("*.mel")}
        self.assertLessEqual({"tessoraCreateUI.mel", "tessoraDeleteUI.mel", "tessoraMenuItemClicked.mel"}, shipped)

    def test_engine_serves_a_program_of_its_own(self):
        use_engine(self, self.moved, CMAKE, lambda folder: [folder / "consumer"])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])
