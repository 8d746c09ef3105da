#!/usr/bin/env python3
"""Drives picking edges in `tessora view`.

    drive_edges.py PROGRAM FOLDER    screenshots go to FOLDER

Edges are picked by a click, a double click, Shift and a line around them; cut and sewn by key and by
button, each as one step of undo; then the mesh is unwrapped along them.
"""
import math

from window_driver import (drive_on_a_screen, make_sheet, quit_without_saving, shells, tell)

# A sheet of 4 x 4 squares. Edges of its middle line from one side to the other.
MIDDLE = (5, 16, 25, 34)


def click_edge(window, edge, held=None):
    window.move_to(f"edge/{edge}")
    if held:
        window.tool("keydown", held)
    window.press()
    if held:
        window.tool("keyup", held)


def pick_by_clicks(window):
    window.click_for("tool/Edges", "tool/Edges/on")
    window.key("1")  # the view from above
    click_edge(window, MIDDLE[0])
    window.wait_for("picked/1")
    window.picture("one_edge")
    click_edge(window, MIDDLE[3], "shift")
    window.wait_for("picked/4")
    click_edge(window, MIDDLE[0])
    window.wait_for("picked/1")
    click_edge(window, 0, "ctrl")
    window.wait_for("picked/2")
    tell("picked by click, with Shift and with Ctrl")


def pick_a_loop(window):
    click_edge(window, 0)
    window.wait_for("picked/1")
    window.double_click_for(f"edge/{MIDDLE[1]}", "picked/4")
    window.picture("loop")
    tell("picked a loop by double click")


def sew_a_whole_seam(window):
    """A slit around a corner, which is no loop."""
    window.statement('select -cl; polySelect -sep 2 12 sheet; polySelect -add -sep 12 13 sheet; '
                     'polyMapCut; select -cl; print("slit\\n");', "slit\n")
    window.key("F2")
    window.double_click_for(f"edge/{MIDDLE[0]}", "picked/3")
    window.picture("seam")
    window.key("s")
    window.wait_said("polyMapSew1")
    window.double_click_for(f"edge/{MIDDLE[0]}", "picked/4")
    tell("picked a whole seam by double click, and sewn it")


def cut_and_sew(window):
    window.key("c")
    shells(window, 2)
    window.picture("cut")
    window.key("F2", "ctrl+z")
    shells(window, 1)
    window.click("tool/Cut")
    shells(window, 2)
    window.key("F2", "s")
    shells(window, 1)
    window.key("F2", "ctrl+z")
    shells(window, 2)
    tell("cut and sewn, a step of undo each")


def pick_by_lasso(window):
    """Around the whole sheet: all of its 40 edges."""
    window.key("F2")
    x, y = window.place("panel/modelPanel1")
    window.drag([(x - 200, y - 160), (x + 200, y - 160), (x + 200, y + 160), (x - 200, y + 160)])
    window.wait_for("picked/40")
    window.picture("lasso")
    tell("picked by a line around the edges")


def unwrap_nodes(window, count):
    window.statement("size(`ls -type tessora_node`);", rf"Result: {count}\n")


def unwrap_along_them(window):
    window.click("tool/Along my seams")
    window.wait_for("status/tessora_node1: 2 charts along your seams, worst stretch 0.0000, "
                    "98.3 % covered")
    window.wait_said(r"Charts_result\" 2;")
    window.picture("along_the_seams")
    window.click("tool/Along my seams")
    window.wait_said(r"Charts_result\" 2;", 2)
    window.click("tool/Suggest the rest")
    window.wait_said(r"Charts_result\" 2;", 3)
    window.statement("getAttr tessora_node1.Stretch;", r"Result: 0\.15")
    shells(window, 2)
    unwrap_nodes(window, 1)
    window.click("tool/Along my seams")  # of those that were suggested, none goes
    window.wait_said(r"Charts_result\" 2;", 4)
    unwrap_nodes(window, 2)
    window.key("F2", "ctrl+z")
    unwrap_nodes(window, 1)
    tell("unwrapped along the seams, by one node for as long as it has no seams of its own")


def sew_after_the_unwrap(window):
    window.statement('polySelect -sep 2 22 sheet; print("picked\\n");', "picked\n")
    window.key("F2", "s")
    window.wait_for("status/Sewn in the middle. Along my seams lays the charts out anew")
    shells(window, 1)
    window.picture("sewn_after_the_unwrap")
    window.key("F2", "ctrl+z")
    shells(window, 2)
    tell("sewn after the unwrap, and undone")


def frame_in_every_panel(window):
    """A shows everything in the panel that has the keyboard, F what is selected."""
    def length():
        return math.dist(window.place("edge/39"), window.place("edge/0"))

    for panel in (1, 2, 3, 4):
        for key in "af":
            window.click(f"panel/modelPanel{panel}")
            window.statement('select sheet; print("whole\\n");', "whole\n")
            window.key("F2", "a")
            window.settle()
            before = length()
            window.key("minus", "minus", "minus")
            window.wait(lambda: length() < 0.7 * before, f"panel {panel} to show more")
            window.key(key)
            window.wait(lambda: abs(length() - before) < 4, f"panel {panel} to show all again by {key}")
    tell("framed all in every panel")


def drive(window, _):
    pick_by_clicks(window)
    pick_a_loop(window)
    sew_a_whole_seam(window)
    cut_and_sew(window)
    pick_by_lasso(window)
    unwrap_along_them(window)
    sew_after_the_unwrap(window)
    frame_in_every_panel(window)
    quit_without_saving(window)


if __name__ == "__main__":
    drive_on_a_screen(drive, make_sheet)
