#!/usr/bin/env python3
"""Every way to the engine gives the same bits, on meshes with one unusual property each.

    reach_test.py BUILD [unittest arguments]"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = sys.argv[1]
CUBE = "".join(f"v {x} {y} {z}\n" for z in (0, 1) for y in (0, 1) for x in (0, 1))
SIDES = "f 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n"
MESHES = {
    "cube": CUBE + SIDES,
    "far_and_small": "".join(f"v {1e6 + 0.001 * x} {y * 0.001} {z * 0.001}\n" for z in (0, 1) for y in (0, 1)
                             for x in (0, 1)) + SIDES,
    "in_millimetres": "".join(f"v {371.3 * x} {371.3 * y} {371.3 * z}\n" for z in (0, 1) for y in (0, 1)
                              for x in (0, 1)) + SIDES,
    "concave": "v 0 0 0\nv 4 2 0\nv 0 4 1\nv 1 2 0\nv 5 5 0\nf 1 2 3 4\nf 3 2 5\n",
    "repeats_a_vertex": CUBE + SIDES + "v 2 2 2\nf 8 9 8 7\n",
    "diagonal_is_an_edge": "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 2 2 1\nv -1 2 1\nf 1 2 3 4\nf 1 3 5\nf 2 4 6\n",
    "doubled": CUBE + SIDES + "".join("f " + " ".join(reversed(line.split()[1:])) + "\n" for line in SIDES.splitlines()),
    "without_area": CUBE + SIDES + "f 1 2 1\nv 0.5 0 0\nf 1 9 2\n",
    "three_at_an_edge": CUBE + SIDES + "v 0 -1 -1\nv 1 -1 -1\nf 1 2 10 9\n",
}


class Reach(unittest.TestCase):
    def test_program_library_and_package_give_the_same_bits(self):
        with tempfile.TemporaryDirectory() as folder:
            files = []
            for name, text in MESHES.items():
                files.append(pathlib.Path(folder) / f"{name}.obj")
                files[-1].write_text(text)
            done = subprocess.run([sys.executable, ROOT / "bench/reach.py", "--build", BUILD, "--web", folder, *files],
                                  capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertEqual(done.stdout.count("same"), 2 * 2 * len(MESHES), done.stdout)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
