#!/usr/bin/env python3
"""Drives `tessora view` by mouse and keyboard on a virtual screen.

    drive_window.py PROGRAM FOLDER    screenshots of every step go to FOLDER

Opens a mesh, unwraps it by the menu, changes the stretch on the node, unwraps again, undoes twice,
sets presets, saves. Fails with a sentence if a step has not the expected effect.
"""
import re
import sys

from window_driver import drive_on_a_screen, fail_unless, run_script, tell

SPHERE = """global proc writeBall(string $file) {
    polySphere -n ball -r 3 -sx 48 -sy 32;
    polyTorus -n ring -r 5 -sr 0.8 -sx 60 -sy 16;
    file -f -exportAll $file;
}
writeBall(%s);
"""


PUBLISHED = r"Stretch_result\" [0-9.]+"


def uvs(window, file):
    """Exports the scene and returns its texture coordinates."""
    window.statement(f'file -f -exportAll "{file}"; print("written\\n");', "written")
    return [line for line in file.read_text().splitlines() if line.startswith(("vt ", "f "))]


def open_mesh(window, mesh):
    window.key("ctrl+o")
    window.wait_for("file/path/active")
    window.picture("open_dialog")
    window.type(str(mesh))
    window.key("Return")
    window.wait_said("Result: .*ball.obj")
    window.picture("opened")
    tell("opened")


def unwrap_by_menu(window):
    window.click("panel/modelPanel4")
    window.click("menu/Modify")
    window.wait_for("menuitem/Tessora")
    window.picture("modify_menu")
    window.click("menuitem/Tessora")
    window.wait_for("control/tessora_unwrap")
    window.picture("options_dialog")
    window.click("control/tessora_unwrap")
    window.wait_said(PUBLISHED)
    window.wait_gone("dialog/tessoraWindow")
    window.picture("unwrapped")
    fail_unless(not window.has("attribute/changed"), "a fresh unwrap counts as an old one")
    tell("unwrapped by the menu")


def change_stretch_and_unwrap(window):
    window.click("attribute/Stretch")
    window.wait_for("attribute/Stretch/active")
    window.key("ctrl+a")
    window.type("0.01")
    window.key("Return")
    window.statement("getAttr tessora_node1.Stretch;", r"Result: 0\.0099|Result: 0\.01")
    window.wait_for("attribute/changed")
    window.picture("stretch_changed")
    window.click("attribute/Unwrap again")
    window.wait_said(PUBLISHED, 2)
    window.wait_gone("attribute/changed")
    window.picture("unwrapped_again")
    stretch = [float(text) for text in re.findall(r"Stretch_result\" ([0-9.]+)", window.said())]
    fail_unless(stretch[1] <= 0.01 < stretch[0],
                f"the limit 0.01 gave a stretch of {stretch[1]} after {stretch[0]}")
    tell(f"unwrapped again: stretch {stretch[0]}, then {stretch[1]}")


def light_charts(window):
    def lit():
        return "\nlit/" in window.places_file.read_text()

    window.move_to("chart/2")
    window.wait(lambda: window.has("lit/2") and window.has("lit_on_mesh/2"),
                "the chart under the pointer to light up, on the mesh too")
    window.wait_for("result/Chart")  # its figures
    window.picture("chart_under_the_pointer")
    window.move_to("menu/Help")
    window.wait(lambda: not lit(), "no chart to be lit")
    window.move_to("panel/modelPanel4")
    window.wait(lit, "the chart under the pointer in a model panel to light up")
    window.picture("chart_under_the_pointer_on_the_mesh")
    window.move_to("menu/Help")
    window.wait(lambda: not lit(), "no chart to be lit")
    tell("lit charts both ways")


def undo_and_redo(window, scratch, before, first, second):
    window.key("F2", "ctrl+z", "ctrl+z")
    window.statement("getAttr tessora_node1.Stretch;", r"Result: 0\.15")
    # Undo restores the setting but the node recomputes only on request; the window says so.
    window.wait_for("attribute/changed")
    window.picture("undone_twice")
    fail_unless(uvs(window, scratch / "undone_twice.obj") == second,
                "undoing the settings changed the UVs without an unwrap")
    window.key("F2", "ctrl+z")
    window.wait_gone("attribute/Unwrap again")
    fail_unless(uvs(window, scratch / "undone.obj") == before,
                "undoing the unwrap did not bring the first UVs back")
    window.key("F2", "ctrl+shift+z")
    window.wait_for("attribute/Unwrap again")
    window.click("attribute/Unwrap again")
    window.wait_said(PUBLISHED, 3)
    window.settle()
    fail_unless(uvs(window, scratch / "again.obj") == first,
                "the first settings do not give the first UVs again")
    tell("undone twice and once more, redone")


def choose_presets(window, scratch):
    def setting(name, value):
        window.statement(f"getAttr tessora_node1.{name};", rf"Result: {value}\n")

    window.click_for("attribute/Preset", "preset/Hard surface")
    window.picture("presets")
    window.click("preset/Hard surface")
    window.wait_gone("preset/Hard surface")
    setting("Groove_Angle", "60")
    setting("Cut_Ridges", "1")
    window.key("F2", "ctrl+z")
    setting("Groove_Angle", "90")
    setting("Cut_Ridges", "0")
    window.click_for("attribute/Preset", "preset/Bake")
    window.click("preset/Bake")
    window.wait_gone("preset/Bake")
    setting("Texture_Width", "2048")
    mine = scratch / "mine.json"
    mine.write_text('{"padding": 7, "align": true}')
    window.click_for("attribute/Preset", "preset/From a file…")
    window.click_for("preset/From a file…", "file/path/active")
    window.type(str(mine))
    window.key("Return")
    window.wait_said(r"the window has no align; tessora unwrap has")
    setting("Padding", "7")
    setting("Texture_Width", "512")  # a preset changes the defaults, not the preset before it
    mine.write_text('{"paddings": 7}')
    window.click_for("attribute/Preset", "preset/From a file…")
    window.click_for("preset/From a file…", "file/path/active")
    window.type(str(mine))
    window.key("Return")
    window.wait_said(r"the settings have no 'paddings'")
    window.click_for("attribute/Preset", "preset/Defaults")
    window.click("preset/Defaults")
    window.wait_gone("preset/Defaults")
    setting("Padding", "2")
    tell("settings from presets and files, each one step of undo")


def save(window, scene):
    window.key("ctrl+s")
    window.wait_for("file/path/active")
    window.type(str(scene))
    window.key("Return")
    window.wait(scene.exists, "the scene's file")
    window.picture("saved")
    fail_unless("createNode tessora_node" in scene.read_text(),
                "the saved scene has no tessora_node")
    tell("saved")


def drive(window, scratch):
    open_mesh(window, scratch / "ball.obj")
    before = uvs(window, scratch / "before.obj")
    unwrap_by_menu(window)
    first = uvs(window, scratch / "first.obj")
    change_stretch_and_unwrap(window)
    second = uvs(window, scratch / "second.obj")
    fail_unless(before != first and first != second, "an unwrap changed nothing")
    light_charts(window)
    undo_and_redo(window, scratch, before, first, second)
    choose_presets(window, scratch)
    save(window, scratch / "ball.ma")
    window.key("ctrl+q")
    window.wait_end()


def make_mesh(scratch):
    run_script(sys.argv[1], SPHERE % ('"' + str(scratch / "ball.obj") + '"'))
    return ()


if __name__ == "__main__":
    drive_on_a_screen(drive, make_mesh)
