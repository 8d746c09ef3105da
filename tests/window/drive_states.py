#!/usr/bin/env python3
"""Shows the states of `tessora view` one after the other and takes a picture of each.

    drive_states.py PROGRAM FOLDER [WIDTHxHEIGHT[@SCALE] ...]    (1280x720)

Pictures go to FOLDER/WIDTHxHEIGHT. Fails if a menu, a button or a field is cut off by the edge of the
window. To look at all of them in three sizes:

    tests/window/drive_states.py build/release/bin/tessora /tmp/states 1280x720 1920x1080 2560x1440@2
"""
import pathlib
import subprocess
import sys
import tempfile

from window_driver import Window, choose_file, fail_unless, run_script, tell, write_squares

PUBLISHED = r"Stretch_result\" [0-9.]+"
# What may reach beyond the edge: positions in a view, and rows of lists that scroll.
MAY_REACH_OUT = ("chart/", "edge/", "verdict/", "lit", "title/", "live/", "progress/at", "status", "picked/",
                 "charts/locked", "label/", "attribute/", "file/")


class Album:
    """A window of one size, and the pictures of its states."""

    def __init__(self, window, size):
        self.window = window
        self.width, self.height = map(int, size.split("x"))
        self.cut_off = []

    def show(self, name, while_it_works=False):
        self.window.picture(name, while_it_works)
        for line in self.window.places_file.read_text().splitlines():
            place, left, top, width, height = line.split("\t")
            left, top, width, height = map(int, (left, top, width, height))
            if place.startswith(MAY_REACH_OUT) or (width == 0 and height == 0):
                continue
            if left < 0 or top < 0 or left + width > self.width or top + height > self.height:
                self.cut_off.append(f"{name}: {place} at {left},{top}, {width} x {height}")


def show_welcome(album):
    window = album.window
    window.wait_for("sample/hard")
    album.show("welcome")
    window.key("F2", "ctrl+o")
    window.wait_for("file/path/active")
    album.show("open")
    window.key("Escape")
    window.wait_gone("file/path")
    for menu in ("File", "Edit", "Create", "Mesh", "Display", "Window", "Modify", "Help"):
        window.click(f"menu/{menu}")
        album.show("menu_" + menu.lower())
        window.key("Escape")
        window.settle()
    window.key("F2", "F1")
    window.wait_for("help")
    album.show("keys")
    window.key("Escape")
    window.wait_gone("help")
    window.choose("Help", "About Tessora", "about")
    album.show("about")
    window.key("Escape")
    window.wait_gone("about")


def show_a_sample(album):
    window = album.window
    window.click_for("sample/organic", "walk/1")
    album.show("walk")
    window.statement('print("sample\\n");', "sample\n")
    window.click("tool/Unwrap")
    window.wait_said(PUBLISHED)
    album.show("walk_unwrapped")


def show_a_mesh(album, scratch):
    window = album.window
    choose_file(window, ["F2", "ctrl+o"], scratch / "body.obj")
    window.click("question/Discard them")
    window.wait_for("title/body.obj")
    album.show("opened")
    window.key("F2", "ctrl+u")
    window.wait_for("control/tessora_unwrap")
    album.show("settings")
    window.move_to("control/tessora_padding")
    window.wait_for("tooltip/tessora_padding")
    album.show("settings_tooltip")
    window.click("control/tessora_unwrap")
    window.wait_said(PUBLISHED, 2)
    window.wait_gone("dialog/tessoraWindow")
    album.show("unwrapped")
    window.key("F4")
    window.click_for("attribute/Padding", "attribute/Padding/active")
    window.key("ctrl+a")
    window.type("7")
    window.key("Return")
    window.wait_for("attribute/changed")
    album.show("setting_changed")
    window.key("F2", "ctrl+z")
    window.wait_gone("attribute/changed")


def show_displays(album, scratch):
    window = album.window
    for key, name in zip("45678", ("Plain", "Charts", "Checker", "Stretch", "Density")):
        window.key("F2", key)
        window.wait_for(f"display/{name}/on")
        album.show("display_" + name.lower())
    window.key("9")
    window.wait_for("file/path/active")
    album.show("choose_picture")
    window.key("ctrl+a")
    window.type(str(scratch / "drawn.png"))
    window.key("Return")
    window.wait_for("display/Picture/on")
    window.wait_gone("file/path")
    album.show("display_picture")
    window.key("5")
    window.wait_for("display/Charts/on")


def show_charts_by_hand(album):
    window = album.window
    window.click("chart/2")
    window.wait_for("charts/1")
    album.show("chart_picked")
    window.key("F3", "space")
    window.wait_gone("panel/modelPanel4")
    album.show("texture_alone")
    window.key("t")
    window.wait_for("charts/Turn/on")
    window.click_for("charts/Lock", "charts/locked/1")
    album.show("chart_locked")
    window.click_for("charts/Lock", "charts/locked/0")
    window.key("t", "space")
    window.wait_for("panel/modelPanel4")
    window.move_to("panel/modelPanel4")
    window.key("F2", "space")
    window.wait_gone("panel/modelPanel1")
    album.show("panel_alone")
    window.key("space")
    window.wait_for("panel/modelPanel1")
    window.key("Escape")


def show_edges(album):
    window = album.window
    window.click_for("tool/Edges", "tool/Edges/on")
    window.statement('polySelect -edgeLoop 700 bodyShape; print("picked\\n");', "picked\n")
    album.show("edges_picked")
    window.key("F2", "c")
    window.statement("size(`ls -type polyMapCut`);", r"Result: 1\n")
    album.show("cut")
    window.click("tool/Along my seams")
    window.wait_said(PUBLISHED, 3)
    album.show("along_my_seams")
    window.click_for("tool/Live", "tool/Live/on")
    window.settle()
    album.show("live")
    window.click("tool/Live")
    window.wait_gone("tool/Live/on")
    window.click("tool/Objects")


def show_cancelling(album, scratch):
    window = album.window
    window.key("F5")
    window.wait_for("console/field/active")
    window.type("while (1) { }")
    window.tool("key", "Return")
    window.wait_for("progress/Cancel")
    album.show("working", while_it_works=True)
    window.tool("key", "Escape")
    window.wait_said(r"// Cancelled\.\n")
    album.show("cancelled")
    window.key("F2", "ctrl+s")
    window.wait_for("file/path/active")
    album.show("save")
    window.key("Escape")
    window.wait_gone("file/path")
    window.key("F2", "ctrl+e")
    window.wait_for("file/path/active")
    window.key("ctrl+a")
    window.type(str(scratch / "body.obj"))
    window.key("Return")
    window.wait_for("question/Replace it")
    album.show("replace")
    window.key("Escape")
    window.wait_gone("question/Replace it")


def show_errors(album, scratch):
    window = album.window
    window.key("F2", "ctrl+q")
    window.wait_for("question/Keep working")
    album.show("quit")
    window.key("Escape")
    window.wait_gone("question/Keep working")
    choose_file(window, ["F2", "ctrl+o"], scratch / "bad.obj")
    window.click("question/Discard them")
    window.wait_said(r"bad\.obj:3: ")
    album.show("bad_file")
    window.statement('select persp; print("a camera\\n");', "a camera\n")
    window.key("F2", "ctrl+u")
    window.wait_for("control/tessora_unwrap")
    window.click("control/tessora_unwrap")
    window.wait_for("question/OK")
    album.show("refused")
    window.key("Return")
    window.wait_gone("question/OK")
    window.click("control/tessora_close")
    window.wait_gone("dialog/tessoraWindow")


def show_breaches(album, scratch):
    window = album.window
    choose_file(window, ["F2", "ctrl+o"], scratch / "squares.obj")
    window.click("question/Discard them")
    window.wait_for("verdict/overlaps")
    album.show("breaches")
    window.click("verdict/overlaps")
    window.settle()
    album.show("breach_selected")
    choose_file(window, ["F2", "ctrl+o"], scratch / "bare.obj")
    window.settle()
    if window.has("question/Discard them"):
        window.click("question/Discard them")
    window.wait_for("uv/Unwrap")
    album.show("no_uvs")


def show_all(program, folder, wanted):
    size, _, scale = wanted.partition("@")
    with tempfile.TemporaryDirectory(prefix="tessora_states.") as name:
        scratch = pathlib.Path(name)
        make_files(program, scratch)
        preferences = f'optionVar -fv "tessora_window_scale" {scale};\n' if scale else ""
        window = Window(program, pathlib.Path(folder) / size, (), size, preferences)
        try:
            album = Album(window, size)
            show_welcome(album)
            show_a_sample(album)
            show_a_mesh(album, scratch)
            show_displays(album, scratch)
            show_charts_by_hand(album)
            show_edges(album)
            show_cancelling(album, scratch)
            show_errors(album, scratch)
            show_breaches(album, scratch)
        finally:
            window.close()
    fail_unless(not album.cut_off, f"cut off at {wanted}:\n" + "\n".join(album.cut_off))
    tell(f"{window.step} states at {wanted}")


def make_files(program, scratch):
    """A mesh with 8,000 polygons, one that breaks guarantees, one without texture coordinates, one that
    cannot be read, and a picture."""
    run_script(program, 'source tessoraMakeSample; tessoraMakeSample "organic"; '
               f'file -f -exportAll "{scratch / "body.obj"}";')
    write_squares(scratch / "squares.obj", (0.1, 0.1, 0.5, 0.5), (0.3, 0.3, 0.7, 0.7))
    (scratch / "bare.obj").write_text("v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\n")
    (scratch / "bad.obj").write_text("v 0 0 0\nv 1 0 0\nf 1 2 9\n")
    subprocess.run(["convert", "-size", "64x64", "gradient:green-white", str(scratch / "drawn.png")],
                   check=True)


def main():
    program, folder, *sizes = sys.argv[1:]
    for size in sizes or ["1280x720"]:
        show_all(program, folder, size)


if __name__ == "__main__":
    main()
