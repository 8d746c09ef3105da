#!/usr/bin/env python3
"""Sends `tessora view` keys and clicks that all arrive between two frames.

    drive_quick_input.py PROGRAM FOLDER    screenshots go to FOLDER

On a busy machine a window draws seldom, and several keys and clicks reach it at once. None may be
lost, whatever the first of them opens, runs or takes the focus from.
"""
from window_driver import (drive_on_a_screen, fail_unless, make_sheet, quit_without_saving, tell)


def click_at(window, place):
    window.tool("mousemove", *map(str, place), "mousedown", "1", "mouseup", "1")


def menu_and_item(window):
    menu = window.place("menu/Mesh")
    window.click_for("menu/Mesh", "menuitem/Pick edges")
    window.settle()
    item = window.place("menuitem/Pick edges")
    window.key("Escape")
    window.wait_gone("menuitem/Pick edges")
    with window.between_two_frames():
        click_at(window, menu)
        click_at(window, item)
    window.wait_for("tool/Edges/on")
    tell("a menu and its item")


def statement_and_click(window):
    window.key("F5")
    window.type('print("said\\n");')
    place = window.place("tool/Objects")
    with window.between_two_frames():
        window.key("Return")
        click_at(window, place)
    window.wait_gone("tool/Edges/on")
    window.wait_said("said\n")
    tell("a statement and a click")


def long_statement_and_click(window):
    """The click arrives before the progress of the statement is on the screen."""
    window.key("F5")
    window.type("while (1) { }")
    place = window.place("tool/Edges")
    with window.between_two_frames():
        window.key("Return")
        click_at(window, place)
    window.wait_for("progress/Cancel")
    window.tool("key", "Escape")
    window.wait_said("// Cancelled")
    window.wait_for("tool/Edges/on")
    tell("a long statement and a click")


def field_and_button(window):
    """The press takes the focus from a field, which runs a statement before the release."""
    window.key("F2")
    window.click_for("tool/Unwrap", "attribute/Unwrap again")
    window.click_for("attribute/Padding", "attribute/Padding/active")
    window.key("ctrl+a")
    window.type("7")
    place = window.place("attribute/Unwrap again")
    with window.between_two_frames():
        click_at(window, place)
    window.wait_said(r"Stretch_result\" [0-9.]+", 2)
    window.wait_gone("attribute/changed")
    window.statement("getAttr tessora_node1.Padding;", "Result: 7\n")
    tell("a field and a button")


def shortcut_text_and_keys(window):
    window.key("F2")
    with window.between_two_frames():
        window.key("F5")
        window.type("polyCube -n crate;")
        window.key("Return", "F2", "ctrl+z", "F5")
        window.type('print(size(`ls crate ball`) + " left\\n");')
        window.key("Return")
    window.wait_said("0 left\n")
    with window.between_two_frames():
        window.type('polyCube -n crate;')
        window.key("Return")
        window.type('polySphere -n ball;')
        window.key("Return", "F2", "ctrl+z", "ctrl+z", "ctrl+shift+z", "F5")
        window.type('print(size(`ls crate ball`) + " left\\n");')
        window.key("Return")
    window.wait_said("1 left\n")
    tell("shortcuts, text and keys")


def drag(window):
    before = window.place("splitter/columns")
    with window.between_two_frames():
        window.drag([before, (before[0] - 90, before[1])])
    window.wait(lambda: abs(window.place("splitter/columns")[0] - before[0] + 90) <= 3,
                "the splitter to follow")
    window.statement('delete crate; select sheet; print("alone\\n");', "alone\n")
    window.key("F2", "1")  # the view from above
    window.click_for("tool/Edges", "tool/Edges/on")
    x, y = window.place("panel/modelPanel1")
    with window.between_two_frames():
        window.drag([(x - 200, y - 160), (x + 200, y - 160), (x + 200, y + 160), (x - 200, y + 160)])
    window.wait_for("picked/40")
    tell("drags")


def key_before_a_question(window):
    """Enter was pressed before the question could be read: it is no answer."""
    window.key("F2")
    with window.between_two_frames():
        window.key("ctrl+n", "Return")
    window.wait_for("question/Keep working")
    window.settle()
    fail_unless(window.has("question/Keep working"), "the question was answered before it was asked")
    window.key("Escape")
    window.wait_gone("question/Keep working")
    tell("a key before a question")


def release_after_a_result(window):
    """Live gets a result while its button is held down."""
    window.key("F2")
    window.click_for("tool/Live", "tool/Live/on")
    window.statement('polySelect -sep 2 22 sheet; print("picked\\n");', "picked\n")
    window.move_to("tool/Live")
    with window.between_two_frames():
        window.key("F2", "c")
        window.tool("mousedown", "1")
    window.wait_for("tool/Live/active")
    window.tool("mouseup", "1")
    window.wait_gone("tool/Live/on")
    tell("a result while a button is held")


def drive(window, _):
    menu_and_item(window)
    statement_and_click(window)
    long_statement_and_click(window)
    field_and_button(window)
    shortcut_text_and_keys(window)
    drag(window)
    key_before_a_question(window)
    release_after_a_result(window)
    quit_without_saving(window)


if __name__ == "__main__":
    drive_on_a_screen(drive, make_sheet)
