#!/usr/bin/env python3
"""Drives what a new user meets first in `tessora view`.

    drive_first_minutes.py PROGRAM FOLDER    screenshots go to FOLDER

What was opened is meant without selecting it; a mesh without texture coordinates invites to unwrap
it; dialogs explain themselves, stay open when refused and take Enter; the title, the menus, recent
files, the size of everything, splitters, and names in other alphabets.
"""
import pathlib
import sys
import time

from window_driver import choose_file, drive_on_a_screen, fail_unless, run_script, tell

PUBLISHED = r"Stretch_result\" [0-9.]+"


def unwrap_what_was_opened(window):
    window.wait_for("title/bare.obj")
    window.picture("bare")
    window.key("F2", "ctrl+u")
    window.wait_for("control/tessora_unwrap")
    window.move_to("control/tessora_padding")
    window.wait_for("tooltip/tessora_padding")
    window.picture("tooltip")
    window.move_to("menu/Help")
    window.key("F2")
    window.click("control/tessora_close")
    window.wait_gone("dialog/tessoraWindow")
    window.click("uv/Unwrap")
    window.wait_said(PUBLISHED)
    window.wait_gone("uv/Unwrap")
    window.wait_for("title/bare.obj *")
    window.picture("unwrapped")
    tell("unwrapped what was opened")


def unwrap_what_is_shown(window):
    window.statement('select -cl; print("nothing is selected\\n");', "nothing is selected\n")
    window.key("F2", "ctrl+u")
    window.wait_for("control/tessora_unwrap")
    window.settle()
    window.key("Return")  # the main button
    window.wait_said(PUBLISHED, 2)
    window.wait_gone("dialog/tessoraWindow")
    tell("unwrapped what is shown, by Enter")


def stay_open_when_refused(window):
    window.key("F2", "ctrl+u")
    window.wait_for("control/tessora_unwrap")
    window.statement('select persp; print("a camera is selected\\n");', "a camera is selected\n")
    window.click("control/tessora_unwrap")
    window.wait_for("question/OK")
    window.picture("refused")
    window.click("question/OK")
    window.wait_gone("question/OK")
    window.settle()
    fail_unless(window.has("dialog/tessoraWindow"), "a refused dialog closed")
    window.click("control/tessora_close")
    window.wait_gone("dialog/tessoraWindow")
    tell("a refused dialog stays open")


def read_the_panel(window):
    fail_unless(window.has("label/Keep_Borders"), "no row of the attribute panel has a name")
    for name in ("Charts_result", "Stretch_result", "Skip_compute", "Mesh_path"):
        fail_unless(window.has(f"label/{name}/fixed"), f"{name} can be edited")
    fail_unless(not window.has("label/Padding/fixed"), "the padding cannot be edited")
    window.move_to("label/Stretch")
    window.picture("attribute_help")
    window.click("menu/Mesh")
    window.wait_for("menuitem/Unwrap again")
    window.picture("mesh_menu")
    window.click("menuitem/Unwrap again")
    window.wait_said(PUBLISHED, 3)
    window.choose("Help", "About Tessora", "about")
    window.picture("about")
    window.key("Escape")
    window.wait_gone("about")
    tell("read the panel and the menus")


def title_follows_undo(window, scene):
    choose_file(window, ["F2", "ctrl+s"], scene)
    window.wait_for("title/" + scene.name)
    window.click("panel/modelPanel4")
    window.settle()
    fail_unless(window.has("title/" + scene.name), "a click on the mesh counts as a change")
    window.statement('polyCube; print("made\\n");', "made\n")
    window.wait_for("title/" + scene.name + " *")
    window.key("F2", "ctrl+z")
    window.wait_for("title/" + scene.name)
    tell("the title follows undo")


def open_a_recent_file(window):
    window.click("menu/File")
    window.click("menuitem/Open recent")
    window.wait_for("menuitem/bare.obj")
    window.picture("recent_files")
    window.click("menuitem/bare.obj")
    window.wait_for("title/bare.obj")
    tell("opened a recent file")


def pull_the_splitters(window):
    for name, dx, dy in (("columns", -120, 0), ("texture", 0, 60), ("console", 0, -80)):
        before = window.place("splitter/" + name)
        window.move_to("splitter/" + name)
        window.tool("mousedown", "1")
        time.sleep(0.2)
        window.tool("mousemove_relative", "--", str(dx), str(dy))
        time.sleep(0.3)
        window.tool("mouseup", "1")
        window.settle()
        after = window.place("splitter/" + name)
        moved = after[0] - before[0] if dx else after[1] - before[1]
        fail_unless(abs(moved - (dx or dy)) <= 3, f"{name} moved by {moved}")
    window.picture("splitters")
    window.key("F3", "space")
    window.wait_gone("panel/modelPanel4")
    window.picture("texture_alone")
    window.key("space")
    window.wait_for("panel/modelPanel4")
    tell("pulled the splitters; the texture fills the window and goes back")


def change_the_size(window):
    before = window.place("menu/Help")
    window.click("menu/Display")
    window.click("menuitem/Size of everything")
    window.click("menuitem/150 %")
    window.wait(lambda: window.place("menu/Help") and window.place("menu/Help")[0] > before[0] * 1.2,
                "larger menus")
    window.picture("larger")
    tell("made everything larger")


def show_other_alphabets(window, script):
    script.write_text('print("Größe, γεωμετρία, сетка, 网格, メッシュ\\n");\n')
    window.statement(f'source "{script}";', "メッシュ\n")
    window.picture("alphabets")
    tell("showed names in other alphabets")


def stay_idle(window):
    window.settle()

    def ticks():
        words = pathlib.Path(f"/proc/{window.program.pid}/stat").read_text().split()
        return int(words[13]) + int(words[14])
    before = ticks()
    time.sleep(3)
    spent = ticks() - before
    fail_unless(spent <= 3, f"{spent} ticks of 10 ms in 3 s without an event")
    tell(f"idle: {spent} ticks of 10 ms in 3 s")


def drive(window, scratch):
    unwrap_what_was_opened(window)
    unwrap_what_is_shown(window)
    stay_open_when_refused(window)
    read_the_panel(window)
    title_follows_undo(window, scratch / "saved.ma")
    open_a_recent_file(window)
    pull_the_splitters(window)
    change_the_size(window)
    show_other_alphabets(window, scratch / "alphabets.mel")
    stay_idle(window)
    window.key("F2", "ctrl+q")
    window.wait_end()


def make_mesh(scratch):
    """A mesh without texture coordinates."""
    whole = scratch / "whole.obj"
    run_script(sys.argv[1], f'polySphere -sx 24 -sy 16; file -f -exportAll "{whole}";')
    lines = [line for line in whole.read_text().splitlines() if not line.startswith("vt ")]
    bare = [" ".join(word.split("/")[0] for word in line.split(" ")) if line.startswith("f ") else line
            for line in lines]
    (scratch / "bare.obj").write_text("\n".join(bare) + "\n")
    return (str(scratch / "bare.obj"),)


if __name__ == "__main__":
    drive_on_a_screen(drive, make_mesh)
