#!/usr/bin/env python3
"""Loads and unloads the plug-in in `tessora view`: its UI procedures run, as in any application with a
user interface. In `tessora -c`, which has none, they do not.

    drive_plugin_hooks.py PROGRAM FOLDER    screenshots go to FOLDER
"""
import os
import pathlib
import subprocess
import sys
import tempfile

from window_driver import drive_on_a_screen, fail_unless, tell

PROCEDURE = 'global proc tessora{0}UI() {{ print("{0}UI ran\\n"); }}\n'


def drive(window, _scratch):
    window.wait_said("CreateUI ran")
    tell("loading the plug-in runs tessoraCreateUI")
    fail_unless("DeleteUI ran" not in window.said(),
                "tessoraDeleteUI ran before the plug-in was unloaded")
    window.statement("print(`about -batch` + \" batch\\n\")", "0 batch")
    window.statement("unloadPlugin tessora", "DeleteUI ran")
    tell("unloading the plug-in runs tessoraDeleteUI")
    window.statement("loadPlugin tessora", "CreateUI ran")
    window.picture("loaded_again")


def main():
    sys.argv[1:3] = [str(pathlib.Path(word).resolve()) for word in sys.argv[1:3]]
    with tempfile.TemporaryDirectory(prefix="tessora_hooks.") as name:
        for hook in ("Create", "Delete"):
            (pathlib.Path(name) / f"tessora{hook}UI.mel").write_text(PROCEDURE.format(hook))
        os.environ["MAYA_SCRIPT_PATH"] = name
        os.chdir(name)  # away from any folder `scripts`
        batch = subprocess.run([sys.argv[1], "-c", "loadPlugin tessora; unloadPlugin tessora;"],
                               check=True, stdout=subprocess.PIPE, text=True)
        fail_unless("UI ran" not in batch.stdout, "the program ran UI procedures without a window")
        drive_on_a_screen(drive)


if __name__ == "__main__":
    main()
