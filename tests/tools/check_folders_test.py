#!/usr/bin/env python3
"""Plants folder cycles and CMake lists that reach out of their folder, and expects each to be named."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parents[2] / "tools" / "check_folders.py"


def run_check(files):
    with tempfile.TemporaryDirectory() as root:
        for path, text in files.items():
            file = pathlib.Path(root, path)
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text)
        done = subprocess.run([sys.executable, CHECK, root], capture_output=True, text=True)
    return done.returncode, done.stdout


class Folders(unittest.TestCase):
    def refused(self, files, message):
        code, out = run_check(files)
        self.assertEqual(code, 1, out)
        self.assertIn(message, out)

    def taken(self, files):
        self.assertEqual(run_check(files), (0, ""))

    def test_cycle_of_two_folders_is_named_with_both_includes(self):
        self.refused({"a/x.h": '#include "b/y.h"\n', "b/y.h": "", "b/z.cpp": '\n#include "a/x.h"\n'},
                     "folder cycle: a -> b -> a (a/x.h:1, b/z.cpp:2)")

    def test_cycle_of_three_folders_is_named(self):
        self.refused({"a/x.h": '#include "b/x.h"\n', "b/x.h": '#include "c/x.h"\n',
                      "c/x.h": '#include "a/x.h"\n'}, "folder cycle: a -> b -> c -> a")

    def test_cycle_through_the_public_interface_is_named(self):
        self.refused({"host/include/maya/MObject.h": '#include "host/mesh/mesh.h"\n',
                      "host/mesh/mesh.h": "#include <maya/MObject.h>\n"},
                     "folder cycle: host/include/maya -> host/mesh -> host/include/maya")

    def test_both_of_two_cycles_are_named(self):
        code, out = run_check({"a/x.h": '#include "b/x.h"\n', "b/x.h": '#include "a/x.h"\n',
                               "c/x.h": '#include "d/x.h"\n', "d/x.h": '#include "c/x.h"\n'})
        self.assertEqual((code, out.count("folder cycle:")), (1, 2), out)

    def test_includes_in_one_direction_are_accepted(self):
        self.taken({"a/x.h": "", "b/x.h": '#include "a/x.h"\n#include <vector>\n',
                    "c/x.cpp": '#include "a/x.h"\n#include "b/x.h"\n'})

    def test_headers_of_one_folder_may_include_each_other(self):
        self.taken({"a/x.h": '#include "a/y.h"\n', "a/y.h": '#include "a/x.h"\n'})

    def test_relative_path_to_another_folder_is_named(self):
        self.refused({"a/CMakeLists.txt": "add_library(a x.cpp\n    ../b/y.cpp)\n"},
                     "a/CMakeLists.txt:2: ../b/y.cpp lies outside")

    def test_path_from_the_project_folder_is_named(self):
        self.refused({"a/CMakeLists.txt": "add_library(a ${PROJECT_SOURCE_DIR}/b/y.cpp)\n"},
                     "lies outside")

    def test_path_behind_a_variable_is_named(self):
        self.refused({"a/CMakeLists.txt": "set(other ../b)\nadd_library(a ${other}/y.cpp)\n"},
                     "a/CMakeLists.txt:2:")

    def test_path_that_leaves_the_list_s_own_folder_is_named(self):
        self.refused({"a/CMakeLists.txt": "add_library(a ${CMAKE_CURRENT_SOURCE_DIR}/../b/y.cpp)\n"},
                     "lies outside")

    def test_sources_of_the_list_s_own_folder_are_accepted(self):
        self.taken({"a/CMakeLists.txt": "add_library(a x.cpp file_${SYSTEM}.cpp inner/y.cpp\n"
                                        "    ${CMAKE_CURRENT_SOURCE_DIR}/z.cpp) # as ../b/y.cpp\n"})


if __name__ == "__main__":
    unittest.main()
