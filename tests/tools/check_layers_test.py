#!/usr/bin/env python3
"""Puts one include (or switch name) at a time into an empty tree and checks whether it is reported."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parents[2] / "tools" / "check_layers.py"


def run_check(path, text):
    with tempfile.TemporaryDirectory() as root:
        file = pathlib.Path(root, path)
        file.parent.mkdir(parents=True)
        file.write_text(text)
        done = subprocess.run([sys.executable, CHECK, root], capture_output=True, text=True)
    return done.returncode, done.stdout


class Layers(unittest.TestCase):
    def refused(self, path, text):
        code, out = run_check(path, text)
        self.assertEqual(code, 1, out)
        self.assertIn(path + ":1:", out)

    def taken(self, path, text):
        code, out = run_check(path, text)
        self.assertEqual((code, out), (0, ""))

    def test_engine_may_not_see_the_host(self):
        self.refused("atlas/x.cpp", '#include <maya/MFnMesh.h>\n')

    def test_charts_and_packing_may_not_see_each_other(self):
        self.refused("atlas/charts/x.cpp", '#include "atlas/pack/pack.h"\n')
        self.refused("atlas/pack/x.cpp", '#include "atlas/charts/merge.h"\n')

    def test_engine_geometry_may_not_see_the_stages(self):
        self.refused("atlas/geometry/x.cpp", '#include "atlas/charts/merge.h"\n')

    def test_public_header_of_the_engine_may_not_include_a_stage(self):
        self.refused("atlas/atlas.h", '#include "atlas/geometry/surface.h"\n')

    def test_engine_driver_may_see_every_stage(self):
        self.taken("atlas/road/x.cpp", '#include "atlas/charts/merge.h"\n#include "atlas/pack/pack.h"\n')

    def test_plugin_may_not_see_the_engine(self):
        self.refused("plugin/x.cpp", '#include "atlas/atlas.h"\n')

    def test_plugin_may_not_see_the_embedded_host(self):
        self.refused("plugin/x.cpp", '#include "host/mesh/mesh.h"\n')

    def test_host_may_not_see_the_plugin(self):
        self.refused("host/mesh/x.cpp", '#include "plugin/unwrapper.h"\n')

    def test_a_host_folder_may_not_see_one_below_it(self):
        floors = ["base", "mesh", "ui", "graph", "api", "script", "io", "commands", "view"]
        for above, below in zip(floors, floors[1:]):
            self.refused(f"host/{above}/x.cpp", f'#include "host/{below}/y.h"\n')

    def test_a_host_folder_may_see_itself_and_those_above_it(self):
        self.taken("host/graph/x.cpp", '#include "host/graph/y.h"\n#include "host/base/ref.h"\n')

    def test_public_interface_sees_no_folder_of_the_host(self):
        self.refused("host/include/maya/MX.h", '#include "host/base/object.h"\n')

    def test_a_host_folder_without_a_row_is_named(self):
        code, out = run_check("host/new/x.cpp", "#include <vector>\n")
        self.assertEqual(code, 1, out)
        self.assertIn("host/new/x.cpp", out)

    def test_corelib_may_not_see_the_extension_library(self):
        self.refused("corelib/x.cpp", "#include <d3dx9.h>\n")

    def test_adjacency_of_the_plugin_may_see_the_extension_library(self):
        self.taken("plugin/adjacency.h", "#include <d3dx9.h>\n")

    def test_corelib_math_may_see_the_extension_library(self):
        self.taken("corelib/math/x.cpp", '#include <d3dx9.h>\n#include "corelib/array.h"\n')

    def test_measure_shares_no_code_with_the_engine(self):
        self.refused("measure/x.cpp", '#include "atlas/atlas.h"\n')

    def test_sources_may_not_test_for_a_development_kit(self):
        self.refused("plugin/x.cpp", "#if" + "def TESSORA_MAYA" + "_DEVKIT\n#endif\n")

    def test_standard_library_may_be_seen_everywhere(self):
        self.taken("measure/x.cpp", "#include <vector>\n#include <cmath>\n")


if __name__ == "__main__":
    unittest.main()
