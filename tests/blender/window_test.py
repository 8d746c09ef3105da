"""Tests of the add-on in a window: the operator as a user starts it, and Esc. `tests/blender/run.py BUILD ZIP BLENDER
--window` starts it; it needs a screen (tools/with_screen.sh)."""

import os
import threading
import time
import traceback

import bpy

ADDON = "tessora_uv"
DEADLINE = time.monotonic() + 240


def fail(text):
    print("FAILED:", text, flush=True)
    os._exit(1)


def add(name, **arguments):
    getattr(bpy.ops.mesh, f"primitive_{name}_add")(**arguments)
    mesh = bpy.context.object.data
    for layer in list(mesh.uv_layers):
        mesh.uv_layers.remove(layer)
    return mesh


def started(**settings):
    window = bpy.context.window_manager.windows[0]
    area = next(area for area in window.screen.areas if area.type == "VIEW_3D")
    region = next(region for region in area.regions if region.type == "WINDOW")
    with bpy.context.temp_override(window=window, area=area, region=region):
        if bpy.ops.uv.tessora_unwrap("INVOKE_DEFAULT", **settings) != {"RUNNING_MODAL"}:
            fail("the operator does not run modally")
    return window


def steps():
    """Yields seconds to wait."""
    mesh = add("monkey")
    started()
    while not mesh.uv_layers:
        yield 0.2
    print("ok: the operator ends by itself and writes", flush=True)

    mesh = add("uv_sphere", segments=256, ring_count=200)
    window = started(quality=True)
    yield 0.5
    if mesh.uv_layers:
        fail("the engine was done before Esc")
    window.event_simulate(type="ESC", value="PRESS", x=10, y=10)
    window.event_simulate(type="ESC", value="RELEASE", x=10, y=10)
    begin = time.monotonic()
    while threading.active_count() > 1:
        yield 0.1
    print(f"ok: Esc stopped the engine after {time.monotonic() - begin:.1f} s", flush=True)
    yield 1.0
    if mesh.uv_layers:
        fail("a stopped run wrote")
    print("ok: a stopped run changes nothing", flush=True)
    os._exit(0)


def run():
    try:
        if time.monotonic() > DEADLINE:
            fail("took too long")
        return next(work)
    except Exception:
        traceback.print_exc()
        os._exit(1)


bpy.ops.preferences.addon_install(filepath=os.environ["TESSORA_ADDON"])
bpy.ops.preferences.addon_enable(module=ADDON)
work = steps()
bpy.app.timers.register(run, first_interval=2.0)
