#!/usr/bin/env python3
"""Puts one source at a time into an empty tree and checks which functions the budget check names."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parents[2] / "tools" / "check_budgets.py"
LINES = "    work();\n"


def run_check(text, path="atlas/x.cpp"):
    with tempfile.TemporaryDirectory() as root:
        file = pathlib.Path(root, path)
        file.parent.mkdir(parents=True)
        file.write_text(text)
        done = subprocess.run([sys.executable, CHECK, root], capture_output=True, text=True)
    return done.returncode, done.stdout


class Functions(unittest.TestCase):
    def too_long(self, text, name, lines=41):
        self.assertEqual(run_check(text), (1, f"atlas/x.cpp:1: {name} has {lines} lines, 40 is the limit\n"))

    def accepted(self, text, path="atlas/x.cpp"):
        self.assertEqual(run_check(text, path), (0, ""))

    def test_forty_lines_are_accepted(self):
        self.accepted("void f() {\n" + LINES * 38 + "}\n")

    def test_forty_one_lines_are_too_long(self):
        self.too_long("void f() {\n" + LINES * 39 + "}\n", "f")

    def test_a_signature_of_two_lines_counts(self):
        self.too_long("void f(int a,\n       int b) {\n" + LINES * 38 + "}\n", "f")

    def test_methods_inside_their_class_are_measured(self):
        code, out = run_check("class C {\npublic:\n    void f() {\n" + LINES * 39 + "    }\n};\n")
        self.assertEqual((code, out), (1, "atlas/x.cpp:3: f has 41 lines, 40 is the limit\n"))

    def test_constructors_that_initialize_members_with_braces_are_measured(self):
        self.too_long("C::C(int a) : a_{a}, b_{} {\n" + LINES * 39 + "}\n", "C::C")

    def test_operators_are_measured(self):
        self.too_long("C& C::operator=(const C& c) {\n" + LINES * 39 + "}\n", "operator=")

    def test_lambdas_count_with_the_function_that_holds_them(self):
        self.too_long("void f() {\n    auto g = [] {\n" + LINES * 37 + "    };\n}\n", "f")

    def test_braces_in_strings_and_comments_do_not_count(self):
        self.accepted('void f() {\n    print("}{{"); // {\n}\nvoid g() {\n' + LINES * 30 + "}\n")

    def test_classes_and_initialized_arrays_are_no_functions(self):
        self.accepted("struct S {\n" + "    int a = f();\n" * 60 + "};\n"
                      "const int k[] = {\n" + "    f(1),\n" * 60 + "};\n")

    def test_a_function_marked_as_a_table_is_exempt(self):
        self.accepted("// Table: every command and its help.\nvoid f() {\n" + LINES * 90 + "}\n")

    def test_tests_are_exempt(self):
        self.accepted("void f() {\n" + LINES * 90 + "}\n", "tests/x.cpp")


class Files(unittest.TestCase):
    def test_a_file_over_the_limit_without_a_reason_fails(self):
        code, out = run_check("int a;\n" * 1001)
        self.assertEqual((code, out), (1, "atlas/x.cpp: 1001 lines, over the limit, no reason given\n"))

    def test_a_file_over_the_limit_with_a_reason_is_only_printed(self):
        self.assertEqual(run_check("// Size: one table.\n" + "int a;\n" * 1001),
                         (0, "atlas/x.cpp: 1002 lines, over budget\n"))

    def test_a_file_over_the_budget_is_only_printed(self):
        self.assertEqual(run_check("int a;\n" * 201, "atlas/x.h"), (0, "atlas/x.h: 201 lines, over budget\n"))


if __name__ == "__main__":
    unittest.main()
