#!/usr/bin/env python3
"""Tests of the Python package, as built: PYTHONPATH=BUILD/python package_test.py [unittest arguments]"""

import functools
import gc
import operator
import os
import pathlib
import pickle
import re
import signal
import subprocess
import sys
import threading
import time
import unittest

import numpy
import tessora

ROOT = pathlib.Path(__file__).resolve().parents[2]
VERTICES = numpy.array([[x, y, z] for z in (0, 1) for y in (0, 1) for x in (0, 1)], numpy.float32)
FACES = [[0, 2, 3, 1], [4, 5, 7, 6], [0, 1, 5, 4], [2, 6, 7, 3], [0, 4, 6, 2], [1, 3, 7, 5]]


def sphere(rings):
    """A sphere of triangles with bumps, so that it takes some time."""
    around = 2 * rings
    angles = numpy.linspace(0, numpy.pi, rings + 1)[:, None], numpy.linspace(0, 2 * numpy.pi, around, False)[None, :]
    radius = 1 + 0.1 * numpy.sin(7 * angles[0]) * numpy.sin(5 * angles[1])
    points = numpy.stack([radius * numpy.sin(angles[0]) * numpy.cos(angles[1]),
                          radius * numpy.sin(angles[0]) * numpy.sin(angles[1]),
                          radius * numpy.cos(angles[0]) * numpy.ones_like(angles[1])], axis=-1).reshape(-1, 3)
    row, column = numpy.meshgrid(numpy.arange(rings), numpy.arange(around), indexing="ij")
    a = (row * around + column).ravel()
    b = (row * around + (column + 1) % around).ravel()
    return points, numpy.concatenate([numpy.stack([a, a + around, b], 1), numpy.stack([b, a + around, b + around], 1)])


class Faces(unittest.TestCase):
    def setUp(self):
        self.expected = tessora.unwrap(VERTICES, FACES).corner_uvs

    def same(self, *arguments, **options):
        numpy.testing.assert_array_equal(tessora.unwrap(*arguments, **options).corner_uvs, self.expected)

    def test_an_array_and_a_list_of_lists_give_the_same_bits(self):
        self.same(VERTICES, numpy.array(FACES))

    def test_flat_corners_with_offsets_give_the_same_bits(self):
        self.same(VERTICES, numpy.ravel(FACES), offsets=range(0, 25, 4))

    def test_every_integer_type_gives_the_same_bits(self):
        for kind in ("int8", "uint8", "int16", "uint16", "int32", "uint32", "int64", "uint64", ">u2", ">i4"):
            self.same(VERTICES, numpy.array(FACES, kind))

    def test_rows_with_gaps_read_only_and_reversed_arrays_give_the_same_bits(self):
        wide = numpy.full((8, 7), 9, numpy.float32)
        wide[:, 2:5] = VERTICES
        wide.setflags(write=False)
        self.same(wide[:, 2:5], FACES)
        self.same(numpy.asfortranarray(VERTICES), FACES)
        self.same(VERTICES[::-1], 7 - numpy.array(FACES))
        self.same(VERTICES.astype(">f4"), numpy.array(FACES)[::-1][::-1])

    def test_faces_of_different_sizes(self):
        faces = FACES[:5] + [[1, 3, 7], [1, 7, 5]]
        atlas = tessora.unwrap(VERTICES, faces)
        self.assertEqual(atlas.corner_uvs.shape, (26, 2))
        self.assertEqual(len(atlas.indices), 12)
        numpy.testing.assert_array_equal(atlas.vmapping[atlas.corner_vertices], [c for face in faces for c in face])

    def test_double_precision_does_not_depend_on_the_unit(self):
        points, faces = sphere(8)
        metres = numpy.round(points, 6)
        millimetres = numpy.round(1000 * metres, 3)
        numpy.testing.assert_array_equal(tessora.unwrap(metres, faces).corner_uvs,
                                         tessora.unwrap(millimetres, faces).corner_uvs)
        self.assertNotEqual(tessora.unwrap(metres.astype(numpy.float32), faces).uvs.tobytes(),
                            tessora.unwrap(millimetres.astype(numpy.float32), faces).uvs.tobytes())

    def test_no_faces_give_an_empty_atlas(self):
        for faces in ([], numpy.zeros((0, 3), int)):
            atlas = tessora.unwrap(VERTICES, faces)
            self.assertEqual((atlas.chart_count, len(atlas.uvs), len(atlas.corner_uvs)), (0, 0, 0))


class Options(unittest.TestCase):
    def test_cuts_as_pairs_and_as_marks_are_the_same(self):
        pairs = tessora.unwrap(VERTICES, FACES, cuts=[[1, 0], [1, 3], [3, 2], [2, 0]])
        marks = numpy.zeros((6, 4), bool)
        marks[0] = True
        marked = tessora.unwrap(VERTICES, FACES, cuts=marks)
        self.assertEqual(pairs.chart_count, 2)
        numpy.testing.assert_array_equal(pairs.corner_uvs, marked.corner_uvs)

    def test_normals_cut_and_weld_joins(self):
        corners = VERTICES[numpy.ravel(FACES)]
        faces = numpy.arange(24).reshape(6, 4)
        self.assertEqual(tessora.unwrap(corners, faces).chart_count, 6)
        self.assertEqual(tessora.unwrap(corners, faces, weld=True).chart_count, 1)
        flat = numpy.repeat([[0, 0, -1], [0, 0, 1], [0, -1, 0], [0, 1, 0], [-1, 0, 0], [1, 0, 0]], 4, axis=0)
        self.assertEqual(tessora.unwrap(corners, faces, weld=True, normals=flat).chart_count, 6)
        self.assertEqual(tessora.unwrap(VERTICES, FACES, normals=flat.reshape(6, 4, 3)).chart_count, 6)

    def test_quality_takes_other_ways(self):
        points, faces = sphere(24)

        def differ(scale):
            fast, thorough = (tessora.unwrap(points * scale, faces, quality=quality) for quality in ("fast", "quality"))
            return fast.uvs.tobytes() != thorough.uvs.tobytes()

        # Where fast mode's layout is the better one, quality mode takes it.
        self.assertTrue(any(differ(scale) for scale in ([4, 1, 1], [2, 1, 1], [1, 1, 1])))

    def test_parametrize_gives_the_form_of_new_vertices(self):
        vmapping, indices, uvs = tessora.parametrize(*sphere(8))
        self.assertEqual((vmapping.dtype, indices.dtype, uvs.dtype), (numpy.uint32, numpy.uint32, numpy.float32))
        self.assertEqual((vmapping.ndim, indices.shape[1], uvs.shape), (1, 3, (len(vmapping), 2)))

    def test_packing_keeps_what_is_kept_and_moves_the_rest(self):
        atlas = tessora.unwrap(VERTICES, FACES, cuts=numpy.ones((6, 4), bool))
        keep = [True] + 5 * [False]
        packed = tessora.pack(VERTICES, FACES, atlas.corner_uvs, keep=keep, gutter=8, density="as_is")
        numpy.testing.assert_array_equal(packed.corner_uvs[:4], atlas.corner_uvs[:4])
        self.assertEqual((packed.chart_count, len(packed.tiles), len(packed.coverage)), (6, 6, 1))

    def test_measure_finds_a_flip(self):
        atlas = tessora.unwrap(VERTICES, FACES)
        self.assertEqual(tessora.measure(VERTICES, FACES, atlas.corner_uvs).breaches, [])
        turned = atlas.corner_uvs.copy()
        turned[:4] = turned[:4][::-1]
        broken = tessora.measure(VERTICES, FACES, turned).breaches
        self.assertTrue(broken and all(len(breach) == 3 for breach in broken), broken)


class Errors(unittest.TestCase):
    def fails(self, text, *arguments, status="invalid_argument", element=None, call=tessora.unwrap, **options):
        with self.assertRaises(tessora.Error) as raised:
            call(*arguments, **options)
        self.assertIsInstance(raised.exception, ValueError)
        self.assertEqual((str(raised.exception), raised.exception.status, raised.exception.element),
                         (text, status, element))

    def test_shapes_and_types(self):
        self.fails("vertices: the shape is (8, 2); it must be (n, 3)", VERTICES[:, :2], FACES)
        self.fails("vertices: the type is <U1; it must be a number", [["a", "b", "c"]], FACES)
        self.fails("faces: the shape is (24,); it must be (n, k) with k at least 3, or flat with offsets",
                   VERTICES, numpy.ravel(FACES))
        self.fails("faces: the type is float64; it must be an integer", VERTICES, numpy.array(FACES, float))
        self.fails("cuts: expected a bool per corner, or pairs of vertices of shape (n, 2)", VERTICES, FACES, cuts=[1])
        self.fails("cuts: 3 elements for 24 corners", VERTICES, FACES, cuts=[True, False, True])
        self.fails("uvs: 3 elements for 24 corners", VERTICES, FACES, VERTICES[:3, :2], call=tessora.pack)

    def test_elements(self):
        self.fails("indices[2] is 99, but there are 8 vertices", VERTICES, [[0, 1, 99]],
                   status="index_out_of_range", element=2)
        self.fails("faces[1] is -1, no vertex", VERTICES, [[0, -1, 2]], status="index_out_of_range", element=1)
        self.fails("offsets: polygon 0 has 2 corners; it must have at least 3", VERTICES, [0, 1], offsets=[0, 2],
                   element=0)
        broken = VERTICES.copy()
        broken[5, 1] = numpy.nan
        self.fails("positions[5] is not finite", broken, FACES, status="not_finite", element=5)

    def test_options(self):
        self.fails("quality is 'best'; it must be 'fast' or 'quality'", VERTICES, FACES, quality="best")
        self.fails("turns is 1; it must be 'any', 'quarter' or 'none'", VERTICES, FACES, VERTICES[:, :2],
                   call=tessora.pack, turns=1)
        self.fails("width is -1; it must be a whole number, 0 to 2147483647", VERTICES, FACES, width=-1)
        self.fails("threads is 1025; it must be 0 to 1024", VERTICES, FACES, threads=1025)
        self.fails("effort is 11; it must be 0 to 10", VERTICES, FACES, effort=11)
        self.fails("max_stretch is 3; it must be 0 to 1", VERTICES, FACES, stretch=3)
        self.fails("more charts are needed than the chart limit allows (6 charts)", VERTICES, FACES,
                   cuts=numpy.ones(24, bool), max_charts=2, status="chart_limit", element=6)

    def test_kept_charts_that_collide_or_lie_outside(self):
        triangles, uvs = [[0, 1, 2], [4, 5, 6]], numpy.array([[0, 0], [0.4, 0], [0, 0.4]] * 2) + 0.1
        self.fails("polygon 1: charts that are to stay where they are lie closer than the gutter", VERTICES, triangles, uvs,
                   call=tessora.pack, keep=[1, 1], status="kept_charts_collide", element=1)
        self.fails("polygon 0: a chart that is to stay where it is lies in no tile", VERTICES, triangles, uvs + [[2, 0]],
                   call=tessora.pack, keep=[1, 0], status="kept_chart_outside", element=0)

    def test_errors_can_be_pickled(self):
        error = pickle.loads(pickle.dumps(tessora.Error("text", "not_finite", 4)))
        self.assertEqual((str(error), error.status, error.element), ("text", "not_finite", 4))


class Memory(unittest.TestCase):
    def test_results_outlive_the_atlas(self):
        atlas = tessora.unwrap(VERTICES, FACES)
        uvs, expected = atlas.uvs, atlas.uvs.tobytes()
        del atlas
        gc.collect()
        junk = [numpy.ones(100) for _ in range(1000)]
        self.assertEqual(uvs.tobytes(), expected)
        del junk

    def test_inputs_are_held_and_let_go(self):
        points, faces = sphere(8)
        before = sys.getrefcount(points), sys.getrefcount(faces)
        held = []
        tessora.unwrap(points, faces, progress=lambda *_: held.append(sys.getrefcount(points)))
        self.assertGreater(max(held), before[0])
        gc.collect()
        self.assertEqual((sys.getrefcount(points), sys.getrefcount(faces)), before)


class Concurrency(unittest.TestCase):
    def test_two_threads_get_the_same_bits(self):
        points, faces = sphere(16)
        results = [None, None]

        def work(i):
            results[i] = tessora.unwrap(points, faces).uvs.tobytes()

        threads = [threading.Thread(target=work, args=(i,)) for i in range(2)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertTrue(results[0])
        self.assertEqual(results[0], results[1])

    def test_other_threads_run_meanwhile(self):
        points, faces = sphere(80)
        stop, count = threading.Event(), [0]

        def tick():
            while not stop.wait(0.001):
                count[0] += 1

        def ticks_meanwhile():
            before = count[0]
            tessora.unwrap(points, faces)
            return count[0] - before

        thread = threading.Thread(target=tick)
        thread.start()
        # On a busy machine the other thread may not get its turn during a short call.
        ran = any(ticks_meanwhile() > 3 for _ in range(100))
        stop.set()
        thread.join()
        self.assertTrue(ran)

    def test_progress_never_decreases_and_ends_with_1(self):
        calls = []
        tessora.unwrap(*sphere(24), progress=lambda stage, fraction: calls.append((stage, fraction)))
        fractions = [fraction for _, fraction in calls]
        self.assertEqual(fractions, sorted(fractions))
        self.assertEqual(fractions[-1], 1.0)
        self.assertTrue(all(isinstance(stage, str) and stage for stage, _ in calls))

    def test_any_number_of_threads_gives_the_same_bits(self):
        points, faces = sphere(60)  # more than 5,000 triangles
        expected = tessora.unwrap(points, faces, threads=1).uvs.tobytes()
        for threads in (0, 2, 7):
            self.assertEqual(tessora.unwrap(points, faces, threads=threads).uvs.tobytes(), expected)

    def test_more_effort_gives_another_layout(self):
        points, faces = sphere(8)
        every_face = numpy.ones(3 * len(faces), bool)
        usual = tessora.unwrap(points, faces, cuts=every_face)
        numpy.testing.assert_array_equal(tessora.unwrap(points, faces, cuts=every_face, effort=4).uvs, usual.uvs)
        self.assertFalse((tessora.unwrap(points, faces, cuts=every_face, effort=0).uvs == usual.uvs).all())

    def test_threads_share_the_work(self):
        points, faces = sphere(120)

        def on_others(threads):
            """The processor time of all threads but this one, in seconds."""
            whole, own = time.process_time(), time.thread_time()
            tessora.unwrap(points, faces, threads=threads)
            return (time.process_time() - whole) - (time.thread_time() - own)

        self.assertLess(on_others(1), 0.0005)
        # On a busy machine the others may come too late for a share of a short call.
        self.assertTrue(any(on_others(4) > 0.0005 for _ in range(100)))

    def test_what_progress_raises_comes_out_of_the_call(self):
        def progress(stage, fraction):
            raise RuntimeError("enough")

        with self.assertRaisesRegex(RuntimeError, "enough"):
            tessora.unwrap(VERTICES, FACES, progress=progress)

    def test_an_interrupt_stops_the_work(self):
        points, faces = sphere(300)
        fractions = {}
        # Not in bytecode, which would look for signals itself.
        progress = functools.partial(operator.setitem, fractions)

        def interrupt_once_it_works():
            while not fractions:
                time.sleep(0.001)
            os.kill(os.getpid(), signal.SIGINT)
        threading.Thread(target=interrupt_once_it_works, daemon=True).start()
        with self.assertRaises(KeyboardInterrupt):
            tessora.unwrap(points, faces, quality="quality", progress=progress)
        self.assertLess(max(fractions.values()), 1.0)


class Documents(unittest.TestCase):
    def test_examples_of_the_page_run(self):
        page = (ROOT / "docs/python.md").read_text()
        examples = re.findall(r"```python\n(.*?)```", page, re.S)
        self.assertGreater(len(examples), 4)
        namespace = {}
        for example in examples:
            exec(compile(example, "docs/python.md", "exec"), namespace)

    def test_stubs_declare_what_the_package_exports(self):
        stubs = (ROOT / "python/tessora/__init__.pyi").read_text()
        for name in tessora.__all__:
            self.assertRegex(stubs, rf"(?m)^(class|def) {name}\b")
        atlas = tessora.unwrap(VERTICES, FACES)
        figures = tessora.measure(VERTICES, FACES, atlas.corner_uvs)
        for name in [n for n in vars(atlas) if not n.startswith("_")] + list(vars(figures)):
            self.assertRegex(stubs, rf"(?m)^    {name}: ")

    def test_every_function_has_a_docstring(self):
        for name in tessora.__all__:
            self.assertTrue(getattr(tessora, name).__doc__, name)

    def test_importing_needs_nothing_but_numpy(self):
        code = "import sys, numpy; before = set(sys.modules); import tessora; print(sorted(set(sys.modules) - before))"
        done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
        self.assertEqual(done.stdout.strip(), "['tessora', 'tessora._engine', 'tessora._errors']")


if __name__ == "__main__":
    unittest.main()
