#!/usr/bin/env python3
"""Drives `tessora view` with the keyboard alone, without any mouse event.

    drive_by_keyboard.py PROGRAM FOLDER    screenshots go to FOLDER

Opens a mesh, unwraps it through the menu bar (Alt) and the options dialog, steps through charts and
displays, changes the node, unwraps again, saves, quits.
"""
import re
import sys

from window_driver import drive_on_a_screen, fail_unless, run_script, tell

PUBLISHED = r"Stretch_result\" [0-9.]+"


def open_and_unwrap(window, scratch):
    window.key("ctrl+o")
    window.wait_for("file/path/active")
    window.type(str(scratch / "torus.obj"))
    window.key("Return")
    window.wait_said(r"Result: .*torus\.obj")
    window.key("F2", "ctrl+a")
    window.key("alt")
    window.wait_for("menuitem/Open…")
    window.key_until("Right", "menu/Modify/focused")
    window.key("Down")
    window.wait_for("menuitem/Tessora")
    window.picture("menu")
    window.key_until("Down", "menuitem/Tessora/focused")
    window.key("Return")
    window.wait_for("dialog/tessoraWindow")
    window.key_until("Tab", "control/tessora_padding/active")
    window.key("ctrl+a")
    window.type("6")
    window.key("Return")
    window.key_until("Down", "control/tessora_unwrap/focused")
    window.picture("dialog")
    window.key("space")
    window.wait_said(PUBLISHED)
    window.wait_gone("dialog/tessoraWindow")
    window.statement("getAttr tessora_node1.Padding;", "Result: 6")
    window.picture("unwrapped")
    tell("opened and unwrapped")


def walk_through_the_menus(window):
    """From the first one again, though another was used last."""
    for _ in range(2):
        window.key("alt")
        window.wait_for("menuitem/New scene")
        for name in ("Edit", "Modify"):
            window.key("Right")
            window.wait_for(f"menu/{name}/focused")
        window.key("Escape")
        window.wait_gone("menu/Modify/focused")
    tell("walked through the menus")


def step_through(window):
    window.key("F3", "bracketright")
    window.wait(lambda: window.has("lit/1") and window.has("lit_on_mesh/1"), "the first chart")
    window.key("bracketright")
    window.wait_for("lit/2")
    for key, name in (("6", "Checker"), ("7", "Stretch"), ("4", "Plain"), ("5", "Charts")):
        window.key(key)
        window.wait_for(f"display/{name}/on")
    window.key("7", "plus", "f", "a")
    window.picture("stretch")
    window.key("Escape")
    window.wait(lambda: not window.has("lit/2"), "no chart to be lit")
    window.key("5", "F2", "space", "f", "Left", "space", "0")
    tell("stepped through charts and displays")


def turn_one_panel(window):
    """Only the panel whose camera turns is drawn again, all four when another chart is lit."""
    def drawn():
        return int(re.search(r"^panels/drawn/(\d+)", window.places_file.read_text(), re.MULTILINE)[1])

    for key, count in (("Left", 1), ("plus", 1), ("bracketright", 4)):
        window.key("F2", "0")
        window.settle()
        before = drawn()
        window.key(key)
        window.wait(lambda: drawn() > before, f"{key} to draw")
        window.settle()
        fail_unless(drawn() == before + count, f"{key} drew {drawn() - before} panels, not {count}")
    window.key("Escape")
    tell("drew no more panels than needed")


def change_the_node(window):
    window.key("F4")
    window.key_until("Tab", "attribute/Stretch/active")
    window.key("ctrl+a")
    window.type("0.02")
    window.key("Return")
    window.wait_for("attribute/changed")
    window.key_until("Up", "attribute/Preset/focused")
    window.key_until("Left", "attribute/Unwrap again/focused")
    window.picture("changed")
    window.key("space")
    window.wait_said(PUBLISHED, 2)
    window.wait_gone("attribute/changed")
    tell("changed the node and unwrapped again")


def drive(window, scratch):
    open_and_unwrap(window, scratch)
    walk_through_the_menus(window)
    step_through(window)
    turn_one_panel(window)
    change_the_node(window)
    window.key("F1")
    window.wait_for("help")
    window.picture("help")
    window.key("F1")
    window.wait_gone("help")
    scene = scratch / "torus.ma"
    window.key("F2", "ctrl+s")
    window.wait_for("file/path/active")
    window.type(str(scene))
    window.key("Return")
    window.wait(scene.exists, "the scene's file")
    fail_unless("tessora_node1" in scene.read_text(), "the saved scene has no tessora_node")
    window.key("ctrl+q")
    window.wait_end()
    tell("saved and quit")


def make_mesh(scratch):
    """Two rings in one mesh, which have two charts at least."""
    file = scratch / "torus.obj"
    run_script(sys.argv[1], f'polyTorus; file -f -exportAll "{file}";')
    lines = file.read_text().splitlines()
    vertices = [line for line in lines if line.startswith("v ")]
    faces = [[int(corner.split("/")[0]) for corner in line.split()[1:]]
             for line in lines if line.startswith("f ")]
    with open(file, "w") as out:
        for height in (0, 2):
            for line in vertices:
                x, y, z = map(float, line.split()[1:])
                out.write(f"v {x} {y + height} {z}\n")
        for first in (0, len(vertices)):
            for face in faces:
                out.write("f " + " ".join(str(vertex + first) for vertex in face) + "\n")
    return ()


if __name__ == "__main__":
    drive_on_a_screen(drive, make_mesh)
