#!/usr/bin/env python3
"""Drives the results of `tessora view`.

    drive_results.py PROGRAM FOLDER    screenshots go to FOLDER

The results say what `tessora verify` would say; a click selects the polygons. Seams of the file's own
UVs are drawn before any unwrap; a click on a chart, in the texture or on the mesh, keeps it lit. Undo
names what it undid, and is no error if there is nothing to undo.
"""
from window_driver import colours, drive_on_a_screen, fail_unless, tell, write_squares


def see_the_files_own_seams(window):
    window.wait_for("panel/modelPanel4")
    window.wait_said("asked at the start\n")
    window.wait_said(r"the window was ready after [0-9.]+ s")
    window.picture("own_seams")
    fail_unless(colours(window, "own_seams").get("00FF00", 0) > 30,
                "the seam of the file's own UVs is not drawn")
    tell("saw the seams of the file")


def read_the_verdict(window):
    window.wait_for("verdict/count/2")
    window.wait_for("verdict/overlaps")
    window.click("verdict/overlaps")
    window.statement("print (size(`ls -sl`) + \" of \" + stringArrayToString(`ls -sl`, \" \") + \"\\n\");",
                     r"of .*\.f\[0:1\]")
    window.wait_for("lit/1")
    window.picture("selected")
    window.key("F2", "Escape")
    window.wait_gone("lit/1")
    window.key("F2", "a", "F3", "a")
    tell("the verdict selects its polygons and shows the chart of the first")


def choose_charts(window):
    window.click("chart/2")
    window.move_to("menu/Help")
    window.wait_for("lit/2")
    window.picture("chosen")
    window.key("F2", "Escape")
    window.wait_gone("lit/2")
    window.click("panel/modelPanel4")
    window.move_to("menu/Help")
    window.wait(lambda: window.has("lit/1") or window.has("lit/2"), "the clicked chart to stay lit")
    tell("charts stay lit after a click")


def cut_by_hand(window):
    window.statement('polyPlane -n sheet -sx 4 -sy 4; polySelect -sep 2 22 sheet; print("picked\\n");',
                     "picked\n")
    window.key("F2", "c")
    window.wait_said("Result: polyMapCut1")
    window.statement("polyEvaluate -us sheet;", r"Result: 2\n")
    window.picture("cut")
    window.key("F2", "s")
    window.wait_said("Result: polyMapSew1")
    window.statement("polyEvaluate -us sheet;", r"Result: 1\n")
    window.key("F2", "ctrl+z")
    window.statement("polyEvaluate -us sheet;", r"Result: 2\n")
    window.click("menu/Mesh")
    window.click("menuitem/Unwrap along my seams")
    window.wait_said(r"Charts_result\" 2;")
    window.picture("along_the_seams")
    tell("cut, sewed and unwrapped along the cut")


def undo_by_name(window):
    window.statement('polyCube -n crate; polySphere -n ball; print("both\\n");', "both\n")
    window.key("F2", "ctrl+z")
    window.wait_for("status/Undone: polyCube, polySphere")
    window.statement("size(`ls crate ball`);", r"Result: 0\n")  # a line is one step
    window.statement('file -f -new; print("empty\\n");', "empty\n")
    window.key("F2", "ctrl+z")
    window.wait_for("status/There is nothing to undo")
    fail_unless("Error" not in window.said(), "nothing to undo is an error:\n" + window.said())
    window.picture("nothing_to_undo")
    tell("nothing to undo is no error")


def check_a_large_mesh(window):
    """Above 100,000 triangles a button asks first."""
    window.statement('file -f -new; polySphere -n large -sx 260 -sy 200; print("large\\n");', r"large\n")
    window.click("result/Check")
    window.wait(lambda: "\nverdict/" in window.places_file.read_text(), "the verdict")
    fail_unless(not window.has("result/Check"), "the button is still there")
    tell("checked a large mesh on request")


def drive(window, _):
    see_the_files_own_seams(window)
    read_the_verdict(window)
    choose_charts(window)
    cut_by_hand(window)
    undo_by_name(window)
    check_a_large_mesh(window)
    window.statement('file -f -new; print("new\\n");', r"new\n")
    window.key("F2", "ctrl+q")
    window.wait_end()


def make_mesh(scratch):
    # Their coordinates overlap.
    write_squares(scratch / "squares.obj", (0.1, 0.1, 0.5, 0.5), (0.3, 0.3, 0.7, 0.7))
    return (str(scratch / "squares.obj"), "--exec", 'print "asked at the start\\n";', "--verbose")


if __name__ == "__main__":
    drive_on_a_screen(drive, make_mesh)
