#!/usr/bin/env python3
"""Makes the packages of a build and tests them outside of the build tree.

    packages_test.py BUILD CPACK CMAKE [unittest arguments]

Unpacks the Debian package into an empty root and the .tar.gz into a folder of another name. From each, a
script makes, unwraps and exports a mesh, and the command line unwraps the export. A project of its own is
built against the packaged engine."""

import json
import os
import pathlib
import re
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
        cls.deb, = (cls.folder / "packages").glob("tessora_*.deb")
        cls.python_deb, = (cls.folder / "packages").glob("python3-tessora_*.deb")
        cls.tar, = (cls.folder / "packages").glob("*.tar.gz")
        cls.root, cls.moved = cls.folder / "root", cls.folder / "another place"
        cls.moved.mkdir()
        run("dpkg", "-x", cls.deb, cls.root).check_returncode()
        run("tar", "-xzf", cls.tar, "-C", cls.moved, "--strip-components=1").check_returncode()

    @classmethod
    def tearDownClass(cls):
        cls.holder.cleanup()

    def use(self, prefix):
        # No variable but these: none may lead into the build tree or to the user's settings.
        use_program(self, [prefix / "bin" / "tessora"],
                    {name: os.environ[name] for name in ("PATH", "HOME") if name in os.environ})

    def test_debian_package_runs_after_installation(self):
        self.use(self.root / "usr")

    def test_archive_runs_from_any_folder(self):
        self.use(self.moved)

    def test_run_paths_do_not_lead_into_the_build_tree(self):
        for module in (self.moved / "lib" / "tessora").iterdir():
            done = run("readelf", "-d", module)
            self.assertNotIn(BUILD, done.stdout, module)

    def test_nothing_of_the_tests_is_packed(self):
        # What makes operations fail, and the frame of the tests.
        for root in (self.root, self.moved):
            for path in root.rglob("*"):
                self.assertNotRegex(path.name, r"faultpoint|armed_points|gtest|_test$", path)
        for module in (self.moved / "lib" / "tessora").iterdir():
            self.assertNotRegex(run("readelf", "-d", module).stdout, r"NEEDED.*(faultpoint|armed_points)", module)

    def test_debian_package_declares_its_dependencies(self):
        done = run("dpkg", "-f", self.deb, "Package", "Version", "Architecture", "Depends")
        self.assertIn("Package: tessora", done.stdout)
        self.assertRegex(done.stdout, r"Depends: .*libc6 .*libstdc\+\+6")

    def test_bill_of_materials_names_every_linked_library(self):
        bill, = self.moved.rglob("tessora.spdx.json")
        packages = {package["name"]: package for package in json.loads(bill.read_text())["packages"]}
        self.assertEqual(packages["tessora"]["licenseDeclared"], "Apache-2.0")
        for library in ("libpng16-16", "libedit2", "libassimp5"):
            self.assertIn("linked dynamically", packages[library]["comment"])
        for headers in ("libeigen3-dev", "nlohmann-json3-dev"):
            self.assertIn("headers compiled in", packages[headers]["comment"])
        self.assertNotIn("libgtest-dev", packages)

    def test_dependencies_are_documented_with_their_licences(self):
        bill, = self.moved.rglob("tessora.spdx.json")
        document = (pathlib.Path(__file__).resolve().parents[2] / "docs/dependencies.md").read_text()
        for package in json.loads(bill.read_text())["packages"]:
            if package["name"] != "tessora":
                self.assertIn(f"`{package['name']}`", document)

    def test_archive_contains_the_scripts(self):
        shipped = {path.name for path in (self.moved / "share/tessora/scripts").glob("*.mel")}
        self.assertLessEqual({"tessoraCreateUI.mel", "tessoraDeleteUI.mel", "tessoraMenuItemClicked.mel"}, shipped)

    def test_archive_contains_the_manual_and_completion(self):
        for name in ("man/man1/tessora.1", "man/man1/tessora-unwrap.1", "bash-completion/completions/tessora",
                     "zsh/vendor-completions/_tessora", "fish/vendor_completions.d/tessora.fish"):
            self.assertIn("tessora", (self.moved / "share" / name).read_text(), name)

    def test_another_project_builds_against_the_packaged_engine(self):
        use_engine(self, self.moved, CMAKE, lambda folder: [folder / "consumer"])

    def test_examples_build_against_the_packaged_engine_and_give_the_same_bits(self):
        examples, = self.moved.rglob("examples")
        with tempfile.TemporaryDirectory() as work:
            for words in (["-S", examples, "-B", work, f"-DCMAKE_PREFIX_PATH={self.moved}"], ["--build", work]):
                done = run(CMAKE, *words)
                self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
            from_c, from_cpp = (run(pathlib.Path(work) / name) for name in ("unwrap_c", "unwrap_cpp"))
            self.assertEqual(from_c.returncode, 0, from_c.stderr)
            self.assertEqual(from_c.stdout, from_cpp.stdout)
            self.assertRegex(from_c.stdout, r"charts: 1\n$")

    def test_a_c_program_builds_by_pkg_config(self):
        with tempfile.TemporaryDirectory() as work:
            environment = {**os.environ, "PKG_CONFIG_PATH": str(self.root / "usr/lib/pkgconfig")}
            flags = run("pkg-config", "--cflags", "--libs", "tessora_atlas", env=environment)
            self.assertEqual(flags.returncode, 0, flags.stderr)
            example, = self.root.rglob("examples/unwrap.c")
            done = run("cc", "-std=c99", "-Wall", "-Wextra", "-Wpedantic", "-Werror", example, *flags.stdout.split(),
                       f"-Wl,-rpath,{self.root / 'usr/lib'}", "-o", pathlib.Path(work) / "a.out")
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertRegex(run(pathlib.Path(work) / "a.out").stdout, r"charts: 1\n$")

    def test_documents_that_headers_name_are_in_the_package(self):
        for header in self.moved.rglob("include/**/*.h"):
            for name in re.findall(r"docs/([a-z-]+\.md)", header.read_text()):
                self.assertTrue(list(self.moved.rglob(f"docs/{name}")), f"{header.name} names docs/{name}")

    def test_python_package_imports_where_it_is_unpacked(self):
        root = self.folder / "python root"
        run("dpkg", "-x", self.python_deb, root).check_returncode()
        code = "import tessora; print(tessora.__file__, tessora.unwrap([[0,0,0],[1,0,0],[0,1,0]], [[0,1,2]]).chart_count)"
        done = run("/usr/bin/python3", "-c", code, env={"PYTHONPATH": str(root / "usr/lib/python3/dist-packages")})
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertRegex(done.stdout, rf"^{re.escape(str(root))}.* 1\n$")
        depends = run("dpkg", "-f", self.python_deb, "Depends").stdout
        self.assertRegex(depends, r"python3-numpy.*libstdc\+\+6|libstdc\+\+6.*python3-numpy")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])
