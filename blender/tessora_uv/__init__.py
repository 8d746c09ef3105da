"""Tessora in Blender: unwraps and packs meshes through the engine's C library.

Edit > Preferences > Add-ons > Install: the zip. Then, in the sidebar of the UV editor or of the 3D view:
Tessora. The same operators are in the UV menus of both."""

bl_info = {
    "name": "Tessora",
    "author": "Brightfold Labs",
    "version": (2, 11, 0),
    "blender": (3, 3, 0),
    "location": "UV Editor and 3D View > Sidebar > Tessora; UV menu",
    "description": "Automatic UV unwrapping: no flips, no overlaps, under a stretch limit, with a gutter",
    "category": "UV",
}

import threading

import bpy
from bpy.props import BoolProperty, EnumProperty, FloatProperty, IntProperty, PointerProperty, StringProperty

from . import engine, meshes

_loaded = {}  # Engine by path


def get_engine(context):
    """Loads the library that the preferences name. Raises engine.EngineError."""
    addon = context.preferences.addons.get(__package__)
    path = bpy.path.abspath(addon.preferences.library) if addon and addon.preferences else ""
    if path not in _loaded:
        _loaded[path] = engine.Engine(path)
    return _loaded[path]


class TextureSettings:
    """What both operators need; as annotations of operators and of the scene's settings."""

    width: IntProperty(name="Width", description="Of the texture, in texels", default=1024, min=1, max=65536)
    height: IntProperty(name="Height", description="Of the texture, in texels", default=1024, min=1, max=65536)
    gutter: FloatProperty(name="Gutter", description="Least distance of two islands, in texels", default=4, min=0, max=1024)
    selected_only: BoolProperty(name="Selected Faces Only", description="Leave the other faces as they are",
                                default=False)
    uv_layer: StringProperty(name="UV Map", description="Made if it is missing; empty: the active one")


class UnwrapSettings(TextureSettings):
    stretch: FloatProperty(name="Stretch", description="Limit for every island: 0 = none, 1 = any", default=0.15, min=0,
                           max=1)
    quality: BoolProperty(name="High Quality", description="Take more time for fewer islands and less stretch")
    use_seams: BoolProperty(name="Cut at Seams", description="Marked seams stay borders of islands", default=False)
    mark_seams: BoolProperty(name="Mark Seams", description="Mark the borders of the new islands as seams", default=True)
    stack: BoolProperty(name="Stack Copies", description="Copies of a sheet share its place in the texture")
    max_charts: IntProperty(name="Most Islands", description="More islands than this are an error; 0 = any number",
                            default=0, min=0)
    threads: IntProperty(name="Threads", description="0 = one a processor. The result does not depend on it", default=0,
                         min=0, max=1024)
    effort: IntProperty(name="Effort", description="For the layout; each step from 4 on about doubles the time", default=4,
                        min=0, max=10)


class PackSettings(TextureSettings):
    turns: EnumProperty(name="Turns", items=[("ANY", "Any", "Whatever packs best"),
                                             ("QUARTER", "Quarter", "By 90 degrees"), ("NONE", "None", "No turns")])
    align: BoolProperty(name="Align", description="Turn straight borders parallel to the axes first")
    density: EnumProperty(name="Density", items=[
        ("AS_IS", "As It Is", "Islands keep their sizes relative to each other"),
        ("UNIFORM", "Uniform", "Every island has the same texels per length"),
        ("FIXED", "Fixed", "Texels per unit of length are given")])
    texels_per_unit: FloatProperty(name="Texels per Unit", description="For a fixed density", default=100, min=0.001)
    stack: EnumProperty(name="Stack", items=[("NONE", "None", "Every island has its own place"),
                                             ("CONGRUENT", "Equal Islands", "Islands of one shape share a place"),
                                             ("MIRRORED", "Mirrored Too", "Also mirror images")])
    tiles: IntProperty(name="Tiles", description="Textures to fill (UDIM)", default=1, min=1, max=100)
    effort: IntProperty(name="Effort", description="Every step doubles the time", default=4, min=0, max=10)


class Job:
    """One call of the engine on a thread, or here and now."""

    def __init__(self, call):
        self._call = call
        self.stage, self.fraction = "", 0.0
        self.cancelled = False
        self.atlas = self.error = None
        self._thread = None

    def _progress(self, stage, fraction):
        self.stage, self.fraction = stage, fraction
        return not self.cancelled

    def run(self):
        try:
            self.atlas = self._call(self._progress)
        except engine.EngineError as error:
            self.error = error
        except Exception as error:  # a defect must not end in a thread that nobody hears of
            self.error = engine.EngineError(f"{type(error).__name__}: {error}")

    def start(self):
        self._thread = threading.Thread(target=self.run)
        self._thread.start()

    @property
    def is_running(self):
        return self._thread is not None and self._thread.is_alive()


class EngineOperator:
    """Reads the meshes, runs the engine, writes the result. Esc stops it and changes nothing."""

    bl_options = {"REGISTER", "UNDO"}
    _timer = _job = None

    @classmethod
    def poll(cls, context):
        return any(obj.type == "MESH" for obj in cls.objects(context))

    @staticmethod
    def objects(context):
        if context.mode == "EDIT_MESH":
            return context.objects_in_mode_unique_data
        return context.selected_objects

    def execute(self, context):
        job = self._begin(context)
        if job is None:
            return {"CANCELLED"}
        job.run()
        return self._end(context, job)

    def invoke(self, context, event):
        if bpy.app.background:
            return self.execute(context)
        self._job = self._begin(context)
        if self._job is None:
            return {"CANCELLED"}
        self._job.start()
        manager = context.window_manager
        manager.progress_begin(0, 100)
        self._timer = manager.event_timer_add(0.1, window=context.window)
        manager.modal_handler_add(self)
        return {"RUNNING_MODAL"}

    def modal(self, context, event):
        if event.type == "ESC" and event.value == "PRESS":
            self._job.cancelled = True
        if event.type != "TIMER":
            return {"RUNNING_MODAL"}
        context.window_manager.progress_update(int(100 * self._job.fraction))
        context.workspace.status_text_set(f"{self._job.stage}: {self._job.fraction:.0%} (Esc stops)")
        if self._job.is_running:
            return {"RUNNING_MODAL"}
        context.window_manager.event_timer_remove(self._timer)
        context.window_manager.progress_end()
        context.workspace.status_text_set(None)
        return self._end(context, self._job)

    def _begin(self, context):
        """The job, or None after a report."""
        self._edits = context.mode == "EDIT_MESH"
        if self._edits:
            for obj in self.objects(context):
                obj.update_from_editmode()
        self._objects = list(self.objects(context))
        self._parts = meshes.read_parts(self._objects, self.selected_only)
        if not self._parts:
            self.report({"ERROR"}, "No faces are selected" if self.selected_only else "There are no faces")
            return None
        try:
            return self._make_job(get_engine(context))
        except engine.EngineError as error:
            self.report({"ERROR"}, str(error))
            return None

    def _end(self, context, job):
        if job.error is not None:
            if not job.error.cancelled:
                self.report({"ERROR"}, self._where(str(job.error)))
            return {"CANCELLED"}
        # UVs can be written as one array only outside of edit mode.
        if self._edits:
            bpy.ops.object.mode_set(mode="OBJECT")
        refused = meshes.write(self._parts, job.atlas, self.uv_layer, getattr(self, "mark_seams", False))
        if self._edits:
            bpy.ops.object.mode_set(mode="EDIT")
        for name in refused:
            self.report({"WARNING"}, f"{name} has no room for another UV map")
        self.report({"INFO"}, self._summary(job.atlas))
        return {"FINISHED"}

    def _where(self, text):
        """The engine's sentence, with the object's name if there is only one."""
        return f"{self._parts[0][0].name}: {text}" if len(self._parts) == 1 else text


class UV_OT_tessora_unwrap(EngineOperator, UnwrapSettings, bpy.types.Operator):
    """Unwrap the selected objects, or the meshes in edit mode, into one texture"""

    bl_idname = "uv.tessora_unwrap"
    bl_label = "Tessora Unwrap"

    def _make_job(self, library):
        mesh = meshes.join(self._parts, self.use_seams)
        options = {"max_stretch": self.stretch, "width": self.width, "height": self.height, "gutter": self.gutter,
                   "quality": int(self.quality), "stack": int(self.stack), "max_charts": self.max_charts,
                   "threads": self.threads, "effort": self.effort}
        return Job(lambda progress: library.unwrap(mesh, progress, **options))

    def _summary(self, atlas):
        over = f", {len(atlas.over_limit)} triangles over the limit" if len(atlas.over_limit) else ""
        return f"{atlas.charts} islands, stretch {atlas.stretch:.3f}{over}"


class UV_OT_tessora_pack(EngineOperator, PackSettings, bpy.types.Operator):
    """Pack the islands of the selected objects, or of the meshes in edit mode, into one texture"""

    bl_idname = "uv.tessora_pack"
    bl_label = "Tessora Pack"

    def _make_job(self, library):
        keep = None
        if self.selected_only:
            # Islands of other faces keep their place, and the chosen ones go around them.
            keep = meshes.unselected(self._objects)
            self._parts = meshes.read_parts(self._objects, False)
        uvs = meshes.read_uvs(self._parts, self.uv_layer)
        if uvs is None:
            raise engine.EngineError("There is no UV map to pack" + (f" named {self.uv_layer}" if self.uv_layer else ""))
        mesh = meshes.join(self._parts, False)
        options = {"width": self.width, "height": self.height, "gutter": self.gutter, "tiles": self.tiles,
                   "turns": engine.TURNS.index(self.turns), "align": int(self.align),
                   "density": engine.DENSITIES.index(self.density), "stack": engine.STACKS.index(self.stack),
                   "effort": self.effort, "texels_per_unit": self.texels_per_unit}
        return Job(lambda progress: library.pack(mesh, uvs, keep, progress, **options))

    def _summary(self, atlas):
        return f"{atlas.charts} islands"


class TessoraUnwrapSettings(UnwrapSettings, bpy.types.PropertyGroup):
    """What the panel's button hands to the operator."""


class TessoraPackSettings(PackSettings, bpy.types.PropertyGroup):
    """What the panel's button hands to the operator."""


class TessoraPanel:
    bl_label = "Tessora"
    bl_category = "Tessora"
    bl_region_type = "UI"

    def draw(self, context):
        for operator, settings in ((UV_OT_tessora_unwrap, context.scene.tessora_unwrap),
                                   (UV_OT_tessora_pack, context.scene.tessora_pack)):
            box = self.layout.box()
            button = box.operator(operator.bl_idname)
            column = box.column()
            column.use_property_split = True
            for name in settings.bl_rna.properties.keys():
                if name in ("rna_type", "name"):
                    continue
                column.prop(settings, name)
                setattr(button, name, getattr(settings, name))


class IMAGE_PT_tessora(TessoraPanel, bpy.types.Panel):
    bl_space_type = "IMAGE_EDITOR"

    @classmethod
    def poll(cls, context):
        return context.space_data.mode == "UV" or context.mode == "EDIT_MESH"


class VIEW3D_PT_tessora(TessoraPanel, bpy.types.Panel):
    bl_space_type = "VIEW_3D"

    @classmethod
    def poll(cls, context):
        return context.mode in {"EDIT_MESH", "OBJECT"}


class TessoraPreferences(bpy.types.AddonPreferences):
    bl_idname = __package__

    library: StringProperty(name="Library", subtype="FILE_PATH",
                            description="The file libtessora_atlas; empty: the one in the add-on, or the system's")

    def draw(self, context):
        self.layout.prop(self, "library")
        try:
            found = get_engine(context)
            self.layout.label(text=f"Tessora {found.version}: {found.path}", icon="CHECKMARK")
        except engine.EngineError as error:
            self.layout.label(text=str(error), icon="ERROR")


def draw_menu(self, context):
    self.layout.separator()
    self.layout.operator(UV_OT_tessora_unwrap.bl_idname)
    self.layout.operator(UV_OT_tessora_pack.bl_idname)


CLASSES = (UV_OT_tessora_unwrap, UV_OT_tessora_pack, TessoraUnwrapSettings, TessoraPackSettings, IMAGE_PT_tessora,
           VIEW3D_PT_tessora, TessoraPreferences)
MENUS = ("IMAGE_MT_uvs", "VIEW3D_MT_uv_map")


def register():
    for kind in CLASSES:
        bpy.utils.register_class(kind)
    bpy.types.Scene.tessora_unwrap = PointerProperty(type=TessoraUnwrapSettings)
    bpy.types.Scene.tessora_pack = PointerProperty(type=TessoraPackSettings)
    for menu in MENUS:
        getattr(bpy.types, menu).append(draw_menu)


def unregister():
    for menu in MENUS:
        getattr(bpy.types, menu).remove(draw_menu)
    del bpy.types.Scene.tessora_pack
    del bpy.types.Scene.tessora_unwrap
    for kind in reversed(CLASSES):
        bpy.utils.unregister_class(kind)
