#!/usr/bin/env python3
"""Installs the add-on's zip into an empty Blender profile and runs addon_test.py there; with --window, window_test.py,
which needs a screen.

    tests/blender/run.py BUILD ZIP [BLENDER] [--window] [-- unittest arguments]"""

import os
import pathlib
import subprocess
import sys
import tempfile

words = sys.argv[1:]
extra = words[words.index("--") + 1:] if "--" in words else []
words = words[:words.index("--")] if "--" in words else words
window = "--window" in words
words = [word for word in words if word != "--window"]
build, addon = map(pathlib.Path, words[:2])
blender = words[2] if len(words) > 2 else "blender"
how = ["--enable-event-simulate"] if window else ["-b", "--python-exit-code", "3"]
script = pathlib.Path(__file__).with_name("window_test.py" if window else "addon_test.py")
with tempfile.TemporaryDirectory() as profile:
    # Debian's Blender finds its modules by the first python3 on the path.
    environment = {**os.environ, "PATH": "/usr/bin:" + os.environ["PATH"],
                   "BLENDER_USER_CONFIG": profile + "/config", "BLENDER_USER_SCRIPTS": profile + "/scripts",
                   "TESSORA_BUILD": str(build.resolve()), "TESSORA_ADDON": str(addon.resolve())}
    done = subprocess.run([blender, "--factory-startup", *how, "--python", script, "--", *extra], env=environment,
                          stdin=subprocess.DEVNULL)
sys.exit(done.returncode)
