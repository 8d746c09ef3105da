#!/usr/bin/env python3
"""Checks which mutants tools/mutants/mutants.py makes of small functions."""

import collections
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools/mutants"))
import mutants  # noqa: E402
from mutants import drawn, listed, mutants_of, without_line  # noqa: E402


def changed(body):
    source = f"int f(int a, int b) {{\n    {body}\n}}\n"
    return {m.operator + ": " + m.apply(source).split("\n")[1].strip() for m in mutants_of("x.cpp", source)}


class Mutants(unittest.TestCase):
    def test_relations_become_their_neighbour_and_their_opposite(self):
        self.assertEqual(changed("return a < b;"), {"relation: return a <= b;", "relation: return a >= b;"})

    def test_arithmetic_is_swapped(self):
        self.assertEqual(changed("return a + b;"), {"arithmetic: return a - b;"})

    def test_numbers_change_by_one(self):
        self.assertEqual(changed("return 7;"), {"constant: return 8;"})

    def test_conditions_are_negated(self):
        self.assertEqual(changed("if (g(a)) b = a;"), {"condition: if (!(g(a))) b = a;"})

    def test_failures_of_host_calls_are_ignored(self):
        self.assertIn("status: if (false) return a;", changed("if (!status) return a;"))

    def test_success_becomes_failure(self):
        self.assertEqual(changed("return MS::kSuccess;"), {"status: return MS::kFailure;"})

    def test_statements_that_only_call_are_removed(self):
        self.assertEqual(changed("g(a, b);"), {"call: ;"})

    def test_declarations_are_not_changed(self):
        self.assertEqual(changed("const int c = a;"), set())

    def test_strings_and_comments_are_not_changed(self):
        self.assertEqual(changed('return "a < 1"; // b + 1'), set())

    def test_the_seed_decides_the_order(self):
        class Words:
            folder = ["corelib"]
            seed = 1

        first = drawn(Words)
        self.assertEqual(first, drawn(Words))
        Words.seed = 2
        self.assertNotEqual(first, drawn(Words))
        self.assertEqual(set(first), set(drawn(Words)))

    def test_listed_mutants_are_found_in_the_sources(self):
        self.assertGreater(len(list(listed())), 30)  # ends the program if one is not

    def test_every_listed_mutant_names_a_test_of_its_folder(self):
        for mutant in mutants.listed():
            self.assertIn(mutant.test, mutants.TESTS[mutants.folder_of(mutant.path)], mutant.path)

    def test_the_test_that_is_named_comes_first_then_those_that_caught_most(self):
        builder = mutants.Builder.__new__(mutants.Builder)
        builder.chosen, path = None, "corelib/error.cpp"
        builder.catches = collections.Counter({(path, "math_test"): 2})
        order = builder.tests_for(mutants.Mutant(path, 0, 1, ";", "listed", "plugin_test"))
        self.assertEqual(order[:3], ["plugin_test", "math_test", "corelib_test"])

    def test_a_source_is_compiled_for_every_target_but_those_that_only_compile(self):
        builder = mutants.Builder.__new__(mutants.Builder)
        with tempfile.TemporaryDirectory() as folder:
            builder.build = pathlib.Path(folder)
            for name in ("plugin/CMakeFiles/a.dir/x.cpp.o", "tests/in/CMakeFiles/b.dir/__/__/plugin/x.cpp.o",
                         "tests/in/CMakeFiles/devkit_guard_1.dir/__/__/plugin/x.cpp.o", "other/CMakeFiles/c.dir/x.cpp.o"):
                file = builder.build / name
                file.parent.mkdir(parents=True)
                file.touch()
            self.assertEqual([file.relative_to(folder).parts[0] for file in builder.objects_of("plugin/x.cpp")],
                             ["plugin", "tests"])

    def test_mutants_are_compared_without_their_line_numbers(self):
        self.assertEqual(without_line("plugin/a.cpp:12: call: {f(); -> ;}"), "plugin/a.cpp: call: {f(); -> ;}")


if __name__ == "__main__":
    unittest.main()
