#!/usr/bin/env python3
"""Drives Live in `tessora view`.

    drive_live.py PROGRAM FOLDER    screenshots go to FOLDER

Cuts go in before the one unwrap node, one step of undo each, and a child process unwraps along them;
undo is followed, too.
"""
from window_driver import (colours, drive_on_a_screen, fail_unless, make_sheet, quit_without_saving,
                           shells, tell)


def results(window):
    names = [line.split("\t")[0] for line in window.places_file.read_text().splitlines()]
    return max([int(name.split("/")[2]) for name in names if name.startswith("live/results/")])


def begin(window):
    window.click_for("tool/Live", "tool/Live/on")
    window.wait(lambda: results(window) >= 1, "a first result")
    window.statement("size(`ls -type tessora_node`);", r"Result: 1\n")
    window.picture("live")
    tell("Live is on")


def cut(window):
    window.statement('polySelect -sep 2 22 sheet; print("picked\\n");', "picked\n")
    window.key("F2", "c")
    window.wait_for("chart/2")
    shells(window, 2)
    window.statement("size(`ls -type tessora_node`);", r"Result: 1\n", )
    window.statement("listConnections -source on -destination off tessora_node1.inMesh;",
                     r"Result: polyMapCut1\n")
    window.picture("cut")
    tell("a cut goes in before the unwrap node, which follows")


def undo_and_redo(window):
    window.key("F2", "ctrl+z")  # the selection was made before the cut
    window.wait_gone("chart/2")
    shells(window, 1)
    window.key("F2", "ctrl+shift+z")
    window.wait_for("chart/2")
    shells(window, 2)
    tell("Live follows undo and redo")


def see_its_seams_without_it(window):
    """The overlay of the unwrap node does not know the seams of Live."""
    window.click("tool/Live")
    window.wait_gone("tool/Live/on")
    window.move_to("menu/Help")
    window.picture("off")
    fail_unless(colours(window, "off").get("00FF00", 0) > 300, "the seams of Live went with it")
    window.click_for("tool/Live", "tool/Live/on")
    tell("the seams stay when Live is switched off")


def sew(window):
    window.statement('select -add sheet.e[5]; print("picked again\\n");', "picked again\n")
    window.key("F2", "s")
    window.wait_gone("chart/2")
    shells(window, 1)
    window.click("tool/Live")
    window.wait_gone("tool/Live/on")
    tell("sewn; Live is off")


def drive(window, _):
    begin(window)
    cut(window)
    undo_and_redo(window)
    see_its_seams_without_it(window)
    sew(window)
    quit_without_saving(window)


if __name__ == "__main__":
    drive_on_a_screen(drive, make_sheet)
