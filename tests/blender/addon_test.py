"""Tests of the Blender add-on, inside Blender: tests/blender/run.py starts it."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

import bpy
import numpy

BUILD = pathlib.Path(os.environ["TESSORA_BUILD"])
PROGRAM = BUILD / "bin" / "tessora"
sys.path.insert(0, str(BUILD / "python"))
import tessora  # the Python package: another way to the same engine

ADDON = "tessora_uv"


def polygons(obj):
    mesh = obj.data
    vertices = numpy.empty(3 * len(mesh.vertices), numpy.float32)
    mesh.vertices.foreach_get("co", vertices)
    return vertices.reshape(-1, 3).astype(numpy.float64), [list(polygon.vertices) for polygon in mesh.polygons]


def uvs_of(obj, layer=None):
    data = (obj.data.uv_layers[layer] if layer else obj.data.uv_layers.active).data
    values = numpy.empty(2 * len(data), numpy.float32)
    data.foreach_get("uv", values)
    return values.reshape(-1, 2)


class Case(unittest.TestCase):
    def setUp(self):
        bpy.ops.wm.read_factory_settings(use_empty=True)
        bpy.ops.preferences.addon_enable(module=ADDON)

    def add(self, name, **arguments):
        getattr(bpy.ops.mesh, f"primitive_{name}_add")(**arguments)
        for layer in list(bpy.context.object.data.uv_layers):
            bpy.context.object.data.uv_layers.remove(layer)
        return bpy.context.object

    def select(self, *objects):
        bpy.ops.object.select_all(action="DESELECT")
        for obj in objects:
            obj.select_set(True)
            bpy.context.view_layer.objects.active = obj

    def verify(self, *objects, stretch=0.15, size=1024, gutter=4):
        """Writes the objects with all digits and lets the program check the layout's guarantees."""
        lines, passed = [], 0
        for obj in objects:
            lines += ["v %.9g %.9g %.9g" % tuple(obj.matrix_world @ vertex.co) for vertex in obj.data.vertices]
            lines += ["vt %.9g %.9g" % tuple(uv) for uv in uvs_of(obj)]
        texture = 0
        for obj in objects:
            for polygon in obj.data.polygons:
                lines.append("f " + " ".join(f"{obj.data.loops[loop].vertex_index + 1 + passed}/{loop + 1 + texture}"
                                             for loop in polygon.loop_indices))
            passed += len(obj.data.vertices)
            texture += len(obj.data.loops)
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "mesh.obj"
            file.write_text("\n".join(lines) + "\n")
            done = subprocess.run([PROGRAM, "verify", file, "--padding", str(gutter), "--width", str(size), "--height",
                                   str(size), "--stretch", str(stretch)], capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def assert_same_bits_as_python(self, obj, **options):
        atlas = tessora.unwrap(*polygons(obj), width=1024, height=1024, gutter=4, **options)
        numpy.testing.assert_array_equal(uvs_of(obj), atlas.corner_uvs)


class Unwrap(Case):
    def test_suzanne_gets_the_engines_bits_and_keeps_every_guarantee(self):
        suzanne = self.add("monkey")
        self.assertEqual(bpy.ops.uv.tessora_unwrap(), {"FINISHED"})
        self.assert_same_bits_as_python(suzanne)
        self.verify(suzanne)

    def test_high_quality_and_stretch_are_handed_on(self):
        suzanne = self.add("monkey")
        bpy.ops.uv.tessora_unwrap(quality=True, stretch=0.3)
        self.assert_same_bits_as_python(suzanne, quality="quality", stretch=0.3)

    def test_effort_is_handed_on(self):
        suzanne = self.add("monkey")
        bpy.ops.uv.tessora_unwrap(effort=0)
        self.assert_same_bits_as_python(suzanne, effort=0)
        without = uvs_of(suzanne)
        bpy.ops.uv.tessora_unwrap()
        self.assertFalse((uvs_of(suzanne) == without).all())

    def test_a_mesh_of_100000_faces(self):
        sphere = self.add("uv_sphere", segments=400, ring_count=251)
        self.assertGreater(len(sphere.data.polygons), 100000)
        self.assertEqual(bpy.ops.uv.tessora_unwrap(), {"FINISHED"})
        self.verify(sphere)

    def test_a_mesh_with_modifiers_is_unwrapped_before_them(self):
        cube = self.add("cube")
        cube.modifiers.new("smooth", "SUBSURF").levels = 2
        cube.modifiers.new("twin", "MIRROR")
        bpy.ops.uv.tessora_unwrap()
        self.assertEqual(len(cube.data.polygons), 6)
        self.assert_same_bits_as_python(cube)
        made = cube.evaluated_get(bpy.context.evaluated_depsgraph_get()).to_mesh()
        self.assertGreater(len(made.polygons), 96)
        self.assertEqual(len(made.uv_layers.active.data), len(made.loops))

    def test_two_objects_share_one_texture_at_one_density(self):
        small = self.add("monkey", location=(5, 0, 0))
        large = self.add("uv_sphere", radius=3)
        self.select(small, large)
        self.assertEqual(bpy.ops.uv.tessora_unwrap(), {"FINISHED"})
        self.verify(small, large)

    def test_two_objects_with_one_mesh_are_unwrapped_once(self):
        first = self.add("monkey")
        second = first.copy()
        bpy.context.collection.objects.link(second)
        self.select(first, second)
        bpy.ops.uv.tessora_unwrap()
        self.assert_same_bits_as_python(first)

    def test_only_selected_faces_change(self):
        suzanne = self.add("monkey")
        suzanne.data.uv_layers.new(name="UVMap")
        before = uvs_of(suzanne).copy()
        bpy.context.tool_settings.mesh_select_mode = (False, False, True)
        chosen = numpy.arange(len(suzanne.data.polygons)) % 3 == 0
        suzanne.data.polygons.foreach_set("select", chosen)
        bpy.ops.object.mode_set(mode="EDIT")
        self.assertEqual(bpy.ops.uv.tessora_unwrap(selected_only=True), {"FINISHED"})
        self.assertEqual(bpy.context.mode, "EDIT_MESH")
        bpy.ops.object.mode_set(mode="OBJECT")
        after = uvs_of(suzanne)
        loops = numpy.repeat(chosen, [p.loop_total for p in suzanne.data.polygons])
        numpy.testing.assert_array_equal(after[~loops], before[~loops])
        vertices, faces = polygons(suzanne)
        atlas = tessora.unwrap(vertices, [face for face, taken in zip(faces, chosen) if taken], width=1024, height=1024,
                               gutter=4)
        numpy.testing.assert_array_equal(after[loops], atlas.corner_uvs)

    def test_marked_seams_are_cuts(self):
        cube = self.add("cube")
        for edge in cube.data.edges:
            edge.use_seam = True
        bpy.ops.uv.tessora_unwrap(use_seams=True)
        self.assert_same_bits_as_python(cube, cuts=numpy.ones(24, bool))

    def test_borders_of_islands_become_seams_and_old_seams_go(self):
        cube = self.add("cube")
        cube.data.edges[0].use_seam = True
        bpy.ops.uv.tessora_unwrap()
        seams = numpy.array([edge.use_seam for edge in cube.data.edges])
        self.assertEqual(seams.sum(), 7)  # a cube in one piece: 12 edges, 5 of them glued
        bpy.ops.uv.tessora_unwrap(use_seams=True, mark_seams=False)
        self.assertEqual(seams.tolist(), [edge.use_seam for edge in cube.data.edges])

    def test_the_named_layer_is_made_and_others_stay(self):
        cube = self.add("cube")
        cube.data.uv_layers.new(name="first")
        before = uvs_of(cube, "first").copy()
        bpy.ops.uv.tessora_unwrap(uv_layer="second")
        self.assertEqual([layer.name for layer in cube.data.uv_layers], ["first", "second"])
        self.assertEqual(cube.data.uv_layers.active.name, "second")
        numpy.testing.assert_array_equal(uvs_of(cube, "first"), before)
        self.assertGreater(numpy.ptp(uvs_of(cube, "second")), 0.5)

    def test_undo_and_redo(self):
        name = self.add("monkey").name
        bpy.ops.ed.undo_push(message="before")
        bpy.ops.uv.tessora_unwrap()
        after = uvs_of(bpy.data.objects[name]).copy()
        bpy.ops.ed.undo_push(message="after")
        bpy.ops.ed.undo()
        self.assertEqual(len(bpy.data.objects[name].data.uv_layers), 0)
        bpy.ops.ed.redo()
        numpy.testing.assert_array_equal(uvs_of(bpy.data.objects[name]), after)


class Pack(Case):
    def test_islands_are_packed_with_the_gutter(self):
        suzanne = self.add("monkey")
        bpy.ops.uv.tessora_unwrap()
        self.assertEqual(bpy.ops.uv.tessora_pack(gutter=16, density="UNIFORM"), {"FINISHED"})
        self.verify(suzanne, gutter=16)

    def test_effort_is_handed_on(self):
        suzanne = self.add("monkey")
        bpy.ops.uv.tessora_unwrap(stretch=0.02)
        unpacked = uvs_of(suzanne).copy()
        bpy.ops.uv.tessora_pack(effort=0)
        without = uvs_of(suzanne).copy()
        suzanne.data.uv_layers.active.data.foreach_set("uv", unpacked.ravel())
        bpy.ops.uv.tessora_pack()
        self.assertFalse((uvs_of(suzanne) == without).all())

    def test_other_faces_keep_their_place(self):
        suzanne = self.add("monkey")
        bpy.ops.uv.tessora_unwrap(stretch=0.02)
        before = uvs_of(suzanne).copy()
        bpy.ops.object.mode_set(mode="EDIT")
        bpy.ops.mesh.select_all(action="SELECT")
        bpy.ops.object.mode_set(mode="OBJECT")
        suzanne.data.polygons[0].select = False
        self.assertEqual(bpy.ops.uv.tessora_pack(selected_only=True), {"FINISHED"})
        start = suzanne.data.polygons[0].loop_start
        numpy.testing.assert_array_equal(uvs_of(suzanne)[start:start + 4], before[start:start + 4])
        self.verify(suzanne, stretch=0.02)

    def test_a_mesh_without_layer_is_refused(self):
        self.add("cube")
        with self.assertRaisesRegex(RuntimeError, "There is no UV map to pack"):
            bpy.ops.uv.tessora_pack()


class Failures(Case):
    def test_a_texture_without_room_is_refused_with_a_sentence_and_changes_nothing(self):
        suzanne = self.add("monkey")
        with self.assertRaisesRegex(RuntimeError, r"Suzanne: the gutter leaves no room for the charts .* \(\d+ charts\)"):
            bpy.ops.uv.tessora_unwrap(width=2, height=2, gutter=8)
        self.assertEqual(len(suzanne.data.uv_layers), 0)

    def test_a_position_that_is_not_finite_is_named(self):
        cube = self.add("cube")
        cube.data.vertices[5].co.x = float("nan")
        with self.assertRaisesRegex(RuntimeError, r"Cube: positions\[5\] is not finite"):
            bpy.ops.uv.tessora_unwrap()

    def test_nothing_selected_is_reported(self):
        cube = self.add("cube")
        cube.data.polygons.foreach_set("select", [False] * 6)
        with self.assertRaisesRegex(RuntimeError, "No faces are selected"):
            bpy.ops.uv.tessora_unwrap(selected_only=True)

    def test_a_missing_library_is_reported_with_what_to_do(self):
        self.add("cube")
        bpy.context.preferences.addons[ADDON].preferences.library = "/nowhere/libtessora_atlas.so"
        with self.assertRaisesRegex(RuntimeError, "/nowhere/libtessora_atlas.so cannot be loaded: .*preferences"):
            bpy.ops.uv.tessora_unwrap()

    def test_esc_stops_the_engine(self):
        self.add("monkey")
        addon = sys.modules[ADDON]
        parts = addon.meshes.read_parts(bpy.context.selected_objects, False)
        mesh = addon.meshes.join(parts, False)
        library = addon.get_engine(bpy.context)
        job = addon.Job(lambda progress: library.unwrap(mesh, progress))
        job.cancelled = True
        job.start()
        job._thread.join(60)
        self.assertFalse(job.is_running)
        self.assertTrue(job.error.cancelled)
        self.assertIsNone(job.atlas)


class Interface(Case):
    def test_panels_and_menus_are_registered_and_removed(self):
        self.assertTrue(hasattr(bpy.types, "IMAGE_PT_tessora") and hasattr(bpy.types, "VIEW3D_PT_tessora"))
        self.assertEqual(bpy.context.scene.tessora_unwrap.stretch, bpy.context.scene.tessora_unwrap.bl_rna.properties["stretch"].default)
        bpy.ops.preferences.addon_disable(module=ADDON)
        self.assertFalse(hasattr(bpy.types, "IMAGE_PT_tessora"))
        self.assertFalse(hasattr(bpy.types.Scene, "tessora_unwrap"))

    def test_the_zip_carries_the_library(self):
        addon = sys.modules[ADDON]
        self.assertEqual(pathlib.Path(addon.get_engine(bpy.context).path).parent, pathlib.Path(addon.__file__).parent)


bpy.ops.preferences.addon_install(filepath=os.environ["TESSORA_ADDON"])
result = unittest.main(argv=["addon_test", *sys.argv[sys.argv.index("--") + 1:]], exit=False, verbosity=2).result
sys.exit(0 if result.wasSuccessful() else 1)
