#!/usr/bin/env python3
"""Drives cancelling in `tessora view`.

    drive_cancel.py PROGRAM FOLDER    screenshots go to FOLDER

Esc and the Cancel button stop an unwrap and a script; the scene is as it was, and nothing is said of
a failure. The bar never runs backwards and names the stage.
"""
import math
import random
import re
import time

from window_driver import colours, drive_on_a_screen, fail_unless, tell

PUBLISHED = r"Stretch_result\" [0-9.]+"
CANCELLED = r"// Cancelled\.\n"


def begin(window, statement):
    """Types a statement that takes long, and waits until its progress is shown."""
    window.key("F5")
    window.type(statement)
    window.tool("key", "Return")
    window.wait_for("progress/Cancel")


def uvs(window, file):
    window.statement(f'file -f -exportAll "{file}"; print("written\\n");', "written\n")
    return [line for line in file.read_text().splitlines() if line.startswith(("vt ", "f "))]


def cancel_by_key(window, scratch):
    before = uvs(window, scratch / "before.obj")
    window.wait_for("title/noisy.obj")
    begin(window, "tessora -hq on;")
    window.tool("key", "Escape")
    begun = time.monotonic()
    window.wait_said(CANCELLED)
    spent = time.monotonic() - begun
    window.wait_gone("progress")
    window.wait_for("title/noisy.obj")
    fail_unless("Error" not in window.said(), "a cancelled unwrap speaks of an error:\n" + window.said())
    window.picture("cancelled")
    window.statement("size(`ls -type tessora_node`);", r"Result: 0\n")
    fail_unless(uvs(window, scratch / "after.obj") == before, "cancelling changed the UVs")
    tell(f"cancelled by Esc after {spent:.2f} s")


def watch_the_bar(window):
    window.wait_for("progress")
    fractions, stages = [], set()
    while window.has("progress"):
        lines = window.places_file.read_text().splitlines()
        fractions += [float(line.split("\t")[0].split("/")[2]) for line in lines
                      if line.startswith("progress/at/")]
        stages |= {line.split("\t")[0].split("/")[2] for line in lines
                   if line.startswith("progress/stage/")}
        time.sleep(0.02)
    fail_unless(fractions == sorted(fractions), f"the bar ran backwards: {fractions}")
    fail_unless(fractions[-1] > 0.2, f"the bar did not move: {fractions}")
    fail_unless(len(stages - {""}) >= 2, f"stages: {stages}")
    tell(f"the bar went to {fractions[-1]} through {sorted(stages)}")


def seam_pixels(window, name):
    """How many pixels have the colours of new and of kept seams."""
    window.move_to("menu/Help")
    window.picture(name)
    found = colours(window, name)
    return found.get("0000FF", 0), found.get("00FF00", 0)


def cancel_by_mouse(window, scratch):
    begin(window, "tessora -hq on;")
    watch_the_bar(window)
    window.wait_said(PUBLISHED)
    before = uvs(window, scratch / "before.obj")
    seams = seam_pixels(window, "unwrapped")
    fail_unless(seams[0] > 300, f"no seams are drawn: {seams}")
    begin(window, "setAttr tessora_node1.Texture_Width 1024; setAttr tessora_node1.Skip_compute 0;")
    x, y = window.place("progress/Cancel")
    window.tool("mousemove", str(x), str(y))
    window.tool("mousedown", "1")
    window.wait(lambda: window.has("progress/Cancel/active") or not window.has("progress"),
                "the button to be pressed")
    window.tool("mouseup", "1")
    window.wait_said(CANCELLED, 2)
    window.wait_gone("progress")
    fail_unless(uvs(window, scratch / "after.obj") == before, "cancelling changed the UVs")
    window.statement("getAttr tessora_node1.Texture_Width;", r"Result: 512\n")
    after = seam_pixels(window, "cancelled_again")
    fail_unless(after == seams, f"other seams are drawn after cancelling: {seams}, {after}")
    fail_unless("Error" not in window.said(), "a cancelled unwrap speaks of an error:\n" + window.said())
    tell("cancelled by mouse")


def cancel_what_changes_seams(window, scratch):
    """An unwrap that keeps the file's own seams, and one that is over before its statement is: the
    node then knows other seams than those of the UVs, which the window draws instead."""
    before = uvs(window, scratch / "before.obj")
    drawn = []
    redo = "setAttr tessora_node1.Skip_compute 0;"
    for count, statement in enumerate((
            f"setAttr tessora_node1.Keep_Borders 1; setAttr tessora_node1.Stretch 0.9; {redo}",
            f"setAttr tessora_node1.High_Quality 0; setAttr tessora_node1.Stretch 0.02; {redo} "
            "dgeval noisyShape.outMesh; while (1) { }")):
        published = len(re.findall(PUBLISHED, window.said()))
        begin(window, statement)
        if "while" in statement:
            window.wait_said(PUBLISHED, published + 1)
        window.tool("key", "Escape")
        window.wait_said(CANCELLED, 3 + count)
        window.wait_gone("progress")
        fail_unless(uvs(window, scratch / "after.obj") == before, "cancelling changed the UVs")
        drawn.append(seam_pixels(window, f"seams_after_{count}"))
    fail_unless(drawn[0] == drawn[1] and drawn[0][0] == 0 and drawn[0][1] > 300,
                f"seams of cancelled unwraps are drawn: {drawn}")
    window.statement(redo, PUBLISHED)
    again = seam_pixels(window, "seams_again")
    fail_unless(again[0] > 300, f"the next unwrap does not show its seams: {again}")
    tell("cancelled unwraps leave no seams of theirs")


def cancel_a_script(window):
    begin(window, "while (1) { }")
    window.picture("script", while_it_works=True)
    window.tool("key", "Escape")
    window.wait_said(CANCELLED, 5)
    window.statement('print("alive\\n");', "alive\n")
    tell("cancelled a script")


def drive(window, scratch):
    cancel_by_key(window, scratch)
    cancel_by_mouse(window, scratch)
    cancel_what_changes_seams(window, scratch)
    cancel_a_script(window)
    window.key("F2", "ctrl+q")
    window.click("question/Discard them")
    window.wait_end()


def make_mesh(scratch):
    """A closed surface with so much noise that to unwrap it takes seconds; its own UVs have a seam."""
    random.seed(1)
    columns, rows = 250, 120
    with open(scratch / "noisy.obj", "w") as file:
        for row in range(rows + 1):
            for column in range(columns):
                a, b = math.pi * (row + 0.5) / (rows + 1), 2 * math.pi * column / columns
                r = 1 + 0.03 * random.random() + 0.2 * math.sin(5 * a) * math.sin(7 * b)
                file.write(f"v {r * math.sin(a) * math.cos(b):.6f} {r * math.cos(a):.6f} "
                           f"{r * math.sin(a) * math.sin(b):.6f}\n")
        for row in range(rows + 1):
            for column in range(columns + 1):
                file.write(f"vt {column / columns:.6f} {row / rows:.6f}\n")
        for row in range(rows):
            for column in range(columns):
                i, j = row * columns + column + 1, row * columns + (column + 1) % columns + 1
                a = row * (columns + 1) + column + 1
                file.write(f"f {i}/{a} {j}/{a + 1} {j + columns}/{a + columns + 2} "
                           f"{i + columns}/{a + columns + 1}\n")
    return (str(scratch / "noisy.obj"),)


if __name__ == "__main__":
    drive_on_a_screen(drive, make_mesh)
