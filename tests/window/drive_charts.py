#!/usr/bin/env python3
"""Drives charts in the texture of `tessora view`.

    drive_charts.py PROGRAM FOLDER    screenshots go to FOLDER

The results lead to the chart with the most stretch; it is scaled by a number, in one step of undo;
several charts are picked.
"""
from window_driver import (corners, drive_on_a_screen, fail_unless, quit_without_saving, tell,
                           write_squares)


def find_the_worst(window):
    def distance():
        return window.place("chart/2")[0] - window.place("chart/1")[0]
    window.wait_for("chart/2")
    before = distance()
    window.click("result/Worst stretch")
    window.move_to("menu/Help")
    window.wait_for("lit/2")
    window.wait_for("charts/1")
    window.wait(lambda: distance() > 1.5 * before, "the chart to fill the view of the texture")
    window.picture("worst")
    window.key("F3", "a")
    window.wait(lambda: distance() < 1.1 * before, "the whole texture to be shown")
    window.key("f")
    window.wait(lambda: distance() > 1.5 * before, "F to frame the chart that is lit")
    window.key("a")
    window.wait(lambda: distance() < 1.1 * before, "the whole texture to be shown again")
    tell("found the chart with the most stretch")


def scale_by_number(window, scratch):
    before = corners(window, scratch)
    window.click("chart_tool/Scale")
    window.wait_for("title/squares.obj *")
    after = corners(window, scratch)
    fail_unless(after[:4] == before[:4], "another chart was scaled, too")
    width = [max(c[0] for c in uvs[4:]) - min(c[0] for c in uvs[4:]) for uvs in (before, after)]
    fail_unless(abs(width[1] - 2 * width[0]) < 1e-5, f"widths {width}")
    window.key("F2", "ctrl+z")
    window.wait_for("title/squares.obj")
    fail_unless(corners(window, scratch) == before, "undo did not bring the chart back")
    tell("scaled by a number")


def size(corners):
    return [max(c[i] for c in corners) - min(c[i] for c in corners) for i in (0, 1)]


def place_of(window, u, v):
    """A place of the texture in pixels, from those of the first triangles of both charts."""
    (x1, y1), (x2, y2) = window.place("chart/1"), window.place("chart/2")
    u1, v1, u2, v2 = (0.125 + 2 * 0.375) / 3, (2 * 0.125 + 0.375) / 3, 1.75 / 3, 1.75 / 3
    return (round(x1 + (u - u1) / (u2 - u1) * (x2 - x1)), round(y1 + (v - v1) / (v2 - v1) * (y2 - y1)))


def turn_and_scale_by_mouse(window, scratch):
    before = corners(window, scratch)
    for hand, key, to, wanted in (("Turn", "t", (0.5625, 0.7), (0.25, 0.125)),
                                  ("Scale", "r", (0.6625, 0.625), (0.25, 0.5))):
        window.key("F3", key)
        window.wait_for(f"charts/{hand}/on")
        window.tool("keydown", "shift")  # by round steps
        window.drag([place_of(window, 0.6125, 0.625), place_of(window, *to)])
        window.tool("keyup", "shift")
        window.wait_for("title/squares.obj *")
        window.picture(hand.lower())
        after = corners(window, scratch)
        fail_unless(after[:4] == before[:4], "another chart was changed, too")
        fail_unless(all(abs(a - b) < 1e-5 for a, b in zip(size(after[4:]), wanted)),
                    f"{hand}: {size(after[4:])}")
        window.key("F2", "ctrl+z")
        window.wait_for("title/squares.obj")
    window.key("F3", "r")
    window.wait_gone("charts/Scale/on")
    fail_unless(corners(window, scratch) == before, "undo did not bring the chart back")
    tell("turned and scaled by mouse")


def pack_around_a_locked_chart(window, scratch):
    before = corners(window, scratch)
    window.click("chart/1")
    window.wait_for("charts/1")
    window.click_for("charts/Lock", "charts/locked/1")
    window.click("charts/Pack")
    window.wait_for("title/squares.obj *")
    window.picture("packed")
    after = corners(window, scratch)
    fail_unless(after[:4] == before[:4], "the locked chart was moved")
    fail_unless(after[4:] != before[4:], "the other chart was not packed")
    window.key("F2", "ctrl+z")
    window.wait_for("title/squares.obj")
    window.click("chart_tool/Scale")
    fail_unless(corners(window, scratch) == before, "a locked chart was scaled")
    window.click_for("charts/Lock", "charts/locked/0")
    tell("packed around a locked chart")


def pick_both(window):
    window.tool("keydown", "ctrl")
    window.click_for("chart/1", "charts/1")
    window.click_for("chart/2", "charts/2")
    window.tool("keyup", "ctrl")
    window.picture("both")
    tell("picked both charts")


def see_a_new_layout(window):
    """However close the texture was looked at, an unwrap shows all of it."""
    def distance():
        return window.place("chart/2")[0] - window.place("chart/1")[0]
    window.click("result/Worst stretch")
    window.wait(lambda: window.has("lit/1") or window.has("lit/2"), "a chart to be framed")
    window.click("tool/Along my seams")
    window.wait_said("Charts_result")
    window.settle()
    shown = distance()
    window.key("F3", "a")
    window.settle()
    fail_unless(abs(distance() - shown) < 4, f"not all of the new layout is shown: {shown}, {distance()}")
    tell("saw all of a new layout")


def drive(window, scratch):
    find_the_worst(window)
    scale_by_number(window, scratch)
    turn_and_scale_by_mouse(window, scratch)
    pack_around_a_locked_chart(window, scratch)
    pick_both(window)
    see_a_new_layout(window)
    quit_without_saving(window)


def make_mesh(scratch):
    # The second with half the width in the texture.
    write_squares(scratch / "squares.obj", (0.125, 0.125, 0.375, 0.375), (0.5, 0.5, 0.625, 0.75))
    return (str(scratch / "squares.obj"),)


if __name__ == "__main__":
    drive_on_a_screen(drive, make_mesh)
