#!/usr/bin/env python3
"""Drives charts with a texel density of their own in `tessora view`.

    drive_density.py PROGRAM FOLDER    screenshots go to FOLDER

A chart gets twice the density of the others. It keeps it when a seam is taken away and the mesh is laid
out along the others, and when Live follows a cut; each is one step of undo.
"""
import os
import pathlib
import signal

from window_driver import (corners, drive_on_a_screen, fail_unless, make_sheet, quit_without_saving,
                           shells, tell)

FACES = 16  # of the sheet: four columns of four


def area(uvs, face):
    """Of a square in the texture."""
    uvs = uvs[4 * face:4 * face + 4]
    return abs(sum(uvs[i - 1][0] * uvs[i][1] - uvs[i][0] * uvs[i - 1][1] for i in range(4))) / 2


def density(window, scratch):
    """Of the first face, as a multiple of that of the last."""
    uvs = corners(window, scratch)
    return (area(uvs, 0) / area(uvs, FACES - 1)) ** 0.5


def wait_for_density(window, scratch, wanted):
    window.settle()
    found = density(window, scratch)
    fail_unless(abs(found - wanted) < 0.02 * wanted, f"density {found}, not {wanted}")


def cut_columns(window):
    window.statement('polySelect -sep 1 21 sheet; polySelect -add -sep 2 22 sheet; print("lines\\n");',
                     "lines\n")
    window.key("F2", "c")
    window.wait_said(r"Result: polyMapCut1\n")
    window.click("tool/Along my seams")
    window.wait_said(r"Charts_result\" 3;")
    window.picture("columns")
    tell("cut into three charts")


def give_density(window, scratch):
    window.statement('select sheet.f[0]; print("face\\n");', "face\n")
    window.wait_for("charts/1")
    window.click("chart_tool/Scale")
    window.click("charts/Pack")
    window.wait_said(r"Result: polyLayoutUV1")
    wait_for_density(window, scratch, 2.0)
    window.picture("twice")
    tell("a chart has twice the density of the others")


def nodes(window, count):
    """Fails unless so many nodes unwrap, and as many pack."""
    for kind in ("tessora_node", "polyLayoutUV"):
        window.statement(f"size(`ls -type {kind}`);", rf"Result: {count}\n")


def take_a_seam_away(window, scratch):
    """The two other charts become one."""
    window.statement('select -cl; polySelect -sep 2 22 sheet; print("line\\n");', "line\n")
    window.key("F2", "s")
    window.wait_for("status/Sewn in the middle. Along my seams lays the charts out anew")
    window.click("tool/Along my seams")
    window.wait_said(r"Charts_result\" 2;")
    shells(window, 2)
    wait_for_density(window, scratch, 2.0)
    window.picture("seam_away")
    window.key("F2", "ctrl+z")
    nodes(window, 1)
    window.key("F2", "ctrl+shift+z")
    nodes(window, 2)
    wait_for_density(window, scratch, 2.0)
    tell("the density outlives a seam")


def cut_with_live(window, scratch):
    window.click_for("tool/Live", "tool/Live/on")
    window.wait(lambda: not window.has("live/results/0"), "a first result")
    wait_for_density(window, scratch, 2.0)
    window.statement('polySelect -sep 3 23 sheet; print("another\\n");', "another\n")
    window.key("F2", "c")
    window.wait_for("chart/3")
    shells(window, 3)
    wait_for_density(window, scratch, 2.0)
    window.picture("live")
    tell("Live keeps the density")


def scale_while_live(window, scratch):
    """Edits by hand come behind the node that Live follows; the next cut goes on behind them."""
    window.statement('select sheet.f[0]; print("face again\\n");', "face again\n")
    window.wait_for("charts/1")
    window.click("chart_tool/Scale")
    window.wait_for("status/Scaled. Pack arranges all charts anew, in these proportions")
    wait_for_density(window, scratch, 4.0)
    window.statement('select -cl; polySelect -sep 2 22 sheet; print("one more\\n");', "one more\n")
    window.key("F2", "c")
    window.wait_for("chart/4")
    shells(window, 4)
    wait_for_density(window, scratch, 4.0)
    window.key("F2", "ctrl+z")
    window.wait_gone("chart/4")
    wait_for_density(window, scratch, 4.0)
    tell("Live goes on behind edits by hand")


def children(window):
    """The process that Live unwraps in."""
    task = pathlib.Path(f"/proc/{window.program.pid}/task/{window.program.pid}/children")
    return [int(word) for word in task.read_text().split()]


def switch_live_off_while_it_waits(window, scratch):
    window.statement('select -cl; select sheet.e[0]; print("an edge\\n");', "an edge\n")
    window.key("F2", "s")  # of the border: nothing to sew, but a node for Live to follow
    window.settle()
    worker = window.wait(lambda: children(window), "the process of Live")[0]
    window.statement('select -cl; polySelect -sep 2 22 sheet; print("the last\\n");', "the last\n")
    os.kill(worker, signal.SIGSTOP)
    try:
        window.key("F2", "c")
        window.wait_for("live/waiting")
        window.click("tool/Live")
        window.wait_gone("tool/Live/on")
        fail_unless(window.has("live/waiting"), "the awaited result was given up")
    finally:
        os.kill(worker, signal.SIGCONT)
    window.wait_gone("live/waiting")
    window.wait_for("chart/4")
    wait_for_density(window, scratch, 4.0)
    window.wait(lambda: not children(window), "the process of Live to end")
    tell("Live switched off brings its last result")


def drive(window, scratch):
    cut_columns(window)
    give_density(window, scratch)
    take_a_seam_away(window, scratch)
    cut_with_live(window, scratch)
    scale_while_live(window, scratch)
    switch_live_off_while_it_waits(window, scratch)
    quit_without_saving(window)


if __name__ == "__main__":
    drive_on_a_screen(drive, make_sheet)
