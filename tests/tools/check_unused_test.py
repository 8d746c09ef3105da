#!/usr/bin/python3
"""Checks that tools/check_unused.py names what nothing calls, on a tree of one source. Run by tools/tidy.sh,
which installs libclang's Python module."""

import json
import pathlib
import subprocess
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parents[2] / "tools" / "check_unused.py"


def run_check(text, kept="main\n"):
    with tempfile.TemporaryDirectory() as root:
        tree = pathlib.Path(root)
        (tree / "tools").mkdir()
        (tree / "tools/kept.txt").write_text(kept)
        (tree / "x.cpp").write_text(text)
        command = {"directory": root, "file": str(tree / "x.cpp"), "command": "c++ -std=c++17 -o x.o -c x.cpp"}
        (tree / "compile_commands.json").write_text(json.dumps([command]))
        done = subprocess.run([CHECK, root, root], capture_output=True, text=True)
    return done.returncode, done.stdout + done.stderr


class Unused(unittest.TestCase):
    def unused(self, text, name):
        self.assertEqual(run_check(text), (1, f"x.cpp:1: {name} is called by no code of the product\n"))

    def accepted(self, text, kept="main\n"):
        self.assertEqual(run_check(text, kept), (0, ""))

    def test_a_function_that_nothing_calls_is_reported(self):
        self.unused("void f() {}\nint main() {}\n", "f")

    def test_a_called_function_is_accepted(self):
        self.accepted("void f() {}\nint main() { f(); }\n")

    def test_a_function_that_only_calls_itself_is_reported(self):
        self.unused("void f() { f(); }\nint main() {}\n", "f")

    def test_a_function_whose_address_is_taken_is_accepted(self):
        self.accepted("void f() {}\nvoid (*table[])() = {f};\nint main() { table[0](); }\n")

    def test_an_overload_that_nothing_calls_is_reported(self):
        self.unused("void f(int) {}\nvoid f(char) {}\nint main() { f('a'); }\n", "f")

    def test_an_unused_method_is_reported_although_another_class_uses_its_name(self):
        self.unused("struct A { void f() {} };\nstruct B { void f() {} };\nint main() { B().f(); }\n", "A::f")

    def test_a_method_called_through_a_template_argument_is_accepted(self):
        self.accepted("struct A { void f() {} };\ntemplate <class T> void g(T t) { t.f(); }\n"
                      "int main() { g(A()); }\n")

    def test_an_override_called_through_its_base_is_accepted(self):
        self.accepted("struct A { virtual void f() = 0; };\nstruct B : A { void f() override; };\n"
                      "void B::f() {}\nint main() { B b; static_cast<A&>(b).f(); }\n")

    def test_a_kept_name_is_accepted(self):
        self.accepted("void f() {}\nint main() {}\n", "main\nf # looked up by the loader\n")

    def test_a_kept_name_that_does_not_exist_is_an_error(self):
        self.assertEqual(run_check("int main() {}\n", "main\ng\n"), (1, "tools/kept.txt: g does not exist\n"))


if __name__ == "__main__":
    unittest.main()
