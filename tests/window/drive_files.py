#!/usr/bin/env python3
"""Drives the file menu and the modal questions of `tessora view`.

    drive_files.py PROGRAM FOLDER    screenshots go to FOLDER

Covers import, new scene, export, unreadable and existing files, message boxes, and the question
before unsaved changes are discarded.
"""
import re
import subprocess
import sys

from window_driver import choose_file, drive_on_a_screen, fail_unless, run_script, tell

KEEP, DISCARD = "question/Keep working", "question/Discard them"


def meshes(window, count):
    window.statement("size(`ls -type mesh`);", rf"Result: {count}\n")


def import_a_mesh(window, scratch):
    meshes(window, 1)
    window.key("F2")
    choose_file(window, ["ctrl+i"], scratch / "b.obj")
    window.wait_said(r"Result: b\n")
    meshes(window, 2)
    window.picture("imported")
    tell("imported beside what was there")


def keep_and_discard(window):
    window.key("F2", "ctrl+n")
    window.wait_for(KEEP)
    window.picture("discard_question")
    window.key("Escape")
    window.wait_gone(KEEP)
    meshes(window, 2)
    window.key("F2", "ctrl+n")
    window.click(KEEP)
    window.wait_gone(KEEP)
    meshes(window, 2)
    window.key("F2", "ctrl+n")
    window.click(DISCARD)
    window.wait_gone(DISCARD)
    meshes(window, 0)
    window.picture("new_scene")
    window.key("F2", "ctrl+n")  # no unsaved changes: no question
    window.settle()
    fail_unless(not window.has(KEEP), "New asks about an empty scene")
    tell("asked before unsaved work went")


def export(window, scratch):
    window.click("menu/Create")
    window.click("menuitem/Torus")
    window.settle()
    meshes(window, 1)
    window.key("F2")
    choose_file(window, ["ctrl+e"], scratch / "ring")
    made = scratch / "ring.obj"
    window.wait(made.exists, "the exported mesh")
    lines = made.read_text().splitlines()
    for kind in ("v ", "vt ", "f "):
        fail_unless(any(line.startswith(kind) for line in lines), f"no '{kind}' in the export")
    made.write_text("precious")
    choose_file(window, ["ctrl+e"], made)
    window.wait_for("question/Replace it")
    window.picture("replace_question")
    window.key("Escape")
    window.wait_gone("question/Replace it")
    window.settle()
    fail_unless(made.read_text() == "precious", "a file was replaced without leave")
    backup = scratch / "ring.obj.bak"
    fail_unless(not backup.exists(), "a file that stays was kept twice")
    choose_file(window, ["ctrl+e"], made)
    window.click("question/Replace it")
    window.wait(lambda: made.read_text() != "precious", "the file to be replaced")
    fail_unless(backup.read_text() == "precious", "the replaced file was not kept")
    made.write_text("less precious")
    window.key("F2")
    choose_file(window, ["ctrl+e"], made)
    window.click("question/Replace it")
    window.wait(lambda: made.read_text() != "less precious", "the file to be replaced again")
    fail_unless(backup.read_text() == "precious", "the backup was replaced")
    backup.unlink()
    tell("exported; what was replaced is kept once")


def export_for_a_game_engine(window, scratch):
    """A texture of 2048 with 8 texels between the charts, set in the dialog."""
    window.key("F2", "ctrl+u")
    window.wait_for("control/tessora_unwrap")
    for setting, value in (("width", 2048), ("height", 2048), ("padding", 8)):
        window.key_until("Tab", f"control/tessora_{setting}/active")
        window.key("ctrl+a")
        window.type(str(value))
        window.key("Return")
    window.click("control/tessora_unwrap")
    window.wait_said(r"Stretch_result\" [0-9.]+")
    made = scratch / "engine.glb"
    window.key("F2")
    choose_file(window, ["ctrl+e"], made)
    window.wait_for(f"status/Exported {made}")
    verified = subprocess.run([sys.argv[1], "verify", str(made), "--width", "2048", "--height", "2048",
                               "--padding", "8"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True)
    fail_unless(verified.returncode == 0, "verify refuses the export:\n" + verified.stdout)
    strict = subprocess.run([sys.argv[1], "verify", str(made), "--stretch", "0"],
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    fail_unless(strict.returncode == 6, "verify holds any layout")
    window.key("F2", "ctrl+z")
    window.settle()
    tell("exported for a game engine, and verified")


def export_and_open_other_formats(window, scratch):
    window.key("F2")
    made = scratch / "ring.glb"
    choose_file(window, ["ctrl+e"], made)
    window.wait(made.exists, "the exported GLB file")
    window.wait_for(f"status/Exported {made}")
    window.key("F2")
    choose_file(window, ["ctrl+e"], scratch / "ring.stl")
    window.wait_said("STL files cannot hold texture coordinates")
    window.key("F2")
    choose_file(window, ["ctrl+o"], made)
    window.click(DISCARD)
    window.wait_for("title/ring.glb")
    window.wait_for("chart/1")  # with its texture coordinates
    meshes(window, 1)
    window.picture("opened_glb")
    (scratch / "broken.glb").write_text("no mesh\n")
    window.key("F2")
    choose_file(window, ["ctrl+o"], scratch / "broken.glb")
    window.wait_said(r"Error.*broken\.glb")
    meshes(window, 1)
    window.statement('polyCube -n extra; delete extra; print("changed\\n");', "changed\n")
    tell("exported and opened another format")


def message_boxes(window):
    window.key("F5")
    window.wait_for("console/field/active")
    window.type('confirmDialog -title "Two ways" -message "Which one?" -button "This" '
                '-button "That" -defaultButton "This";')
    window.key("Return")
    window.wait_for("question/That")
    window.picture("message_box")
    window.click("question/That")
    window.wait_said("Result: That")
    tell("answered a message box")


def refuse_a_bad_file(window, scratch):
    window.key("F2")
    choose_file(window, ["ctrl+o"], scratch / "bad.obj")
    window.click(DISCARD)
    window.wait_said(r"bad\.obj:3: face uses vertex 9")
    window.picture("bad_file")
    window.settle()
    meshes(window, 1)
    tell("kept the scene when a file was bad")


def quit_with_unsaved_work(window, scratch):
    window.click("menu/Create")
    window.click("menuitem/Cube")
    window.settle()
    window.key("F2", "ctrl+q")
    window.wait_for(KEEP)
    window.key("Escape")
    window.wait_gone(KEEP)
    meshes(window, 2)
    scene = scratch / "kept.ma"
    window.key("F2")
    choose_file(window, ["ctrl+s"], scene)
    window.wait(scene.exists, "the scene's file")
    window.wait_for("title/kept.ma")
    window.statement("polyCube;", r"Result: pCube")
    window.wait_for("title/kept.ma *")
    window.key("F2", "ctrl+q")
    window.wait_for(KEEP)
    window.picture("quit_question")
    window.key("Return")  # the main button: Save
    window.wait_end()
    text = scene.read_text()
    fail_unless(len(re.findall("createNode mesh", text)) == 3, "the quit question did not save")
    tell("asked before quitting")


def drive(window, scratch):
    import_a_mesh(window, scratch)
    keep_and_discard(window)
    export(window, scratch)
    export_for_a_game_engine(window, scratch)
    export_and_open_other_formats(window, scratch)
    message_boxes(window)
    refuse_a_bad_file(window, scratch)
    quit_with_unsaved_work(window, scratch)


def make_files(scratch):
    for name, maker in (("a", "polyCube"), ("b", "polySphere")):
        run_script(sys.argv[1], f'{maker}; file -f -exportAll "{scratch / name}.obj";')
    (scratch / "bad.obj").write_text("v 0 0 0\nv 1 0 0\nf 1 2 9\n")
    return (str(scratch / "a.obj"),)


if __name__ == "__main__":
    drive_on_a_screen(drive, make_files)
