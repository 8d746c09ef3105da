#!/usr/bin/env python3
"""Drives the first start of `tessora view` and its displays.

    drive_welcome.py PROGRAM FOLDER    screenshots go to FOLDER

An empty scene offers meshes to try, and a walk follows what the user does; a picture is shown as the
texture of the mesh.
"""
import subprocess

from window_driver import drive_on_a_screen, fail_unless, tell

PUBLISHED = r"Stretch_result\" [0-9.]+"


def take_the_walk(window):
    window.wait_for("sample/hard")
    window.picture("welcome")
    window.click("sample/organic")
    window.wait_for("walk/1")
    window.picture("sample")
    window.click("tool/Unwrap")
    window.wait_said(PUBLISHED)
    window.wait_for("walk/2")
    window.key("6")
    window.wait_for("walk/3")
    window.picture("checker")
    window.key("7")
    window.wait_for("walk/4")
    window.picture("stretch")
    window.statement("polySelect -edgeLoop 700 body; print(\"picked\\n\");", "picked\n")
    window.wait_for("walk/5")
    window.key("F2", "c")
    window.wait_for("walk/6")
    window.picture("cut")
    window.click("tool/Along my seams")
    window.wait_said(PUBLISHED, 2)
    window.wait_for("walk/7")
    window.key("F2", "ctrl+z")
    window.wait_for("walk/8")
    window.picture("last_step")
    window.click("walk/8")
    window.wait_gone("walk/8")
    tell("took the walk")


def show_displays(window, scratch):
    window.key("8")
    window.wait_for("display/Density/on")
    window.picture("density")
    window.key("9")  # there is no picture yet: asks for one
    window.wait_for("file/path/active")
    for name, colour in (("photo.jpg", "orange"), ("drawn.png", "green")):
        window.key("ctrl+a")
        window.type(str(scratch / name))
        window.key("Return")
        window.wait_for("display/Picture/on")
        window.wait_gone("file/path")
        window.picture(f"picture_{colour}")
        window.choose("Display", "Picture as texture…", "file/path/active")
    window.key("ctrl+a")
    window.type(str(scratch / "broken.png"))
    window.key("Return")
    window.wait_said("broken.png: not a PNG or JPEG picture")
    tell("showed pictures as the texture")


def drive(window, scratch):
    for name, colour in (("photo.jpg", "orange"), ("drawn.png", "green")):
        subprocess.run(["convert", "-size", "64x64", f"gradient:{colour}-white", str(scratch / name)],
                       check=True)
    (scratch / "broken.png").write_text("no picture\n")
    take_the_walk(window)
    show_displays(window, scratch)
    window.key("F2", "ctrl+q")
    window.click("question/Discard them")
    window.wait_end()
    fail_unless(window.said().count("Error") == 1, "there was an error:\n" + window.said())


if __name__ == "__main__":
    drive_on_a_screen(drive)
