#!/usr/bin/env python3
"""Installs the add-on's zip into an empty Blender profile and runs addon_test.py there.

    tests/blender/run.py BUILD ZIP [BLENDER] [-- unittest arguments]"""

import os
import pathlib
import subprocess
import sys
import tempfile

words = sys.argv[1:]
extra = words[words.index("--") + 1:] if "--" in words else []
words = words[:words.index("--")] if "--" in words else words
build, addon = map(pathlib.Path, words[:2])
blender = words[2] if len(words) > 2 else "blender"
with tempfile.TemporaryDirectory() as profile:
    # Debian's Blender finds its modules by the first python3 on the path.
    environment = {**os.environ, "PATH": "/usr/bin:" + os.environ["PATH"], "BLENDER_USER_CONFIG": profile + "/config", "BLENDER_USER_SCRIPTS": profile + "/scripts",
                   "TESSORA_BUILD": str(build.resolve()), "TESSORA_ADDON": str(addon.resolve())}
    done = subprocess.run([blender, "-b", "--factory-startup", "--python-exit-code", "3", "--python",
                           pathlib.Path(__file__).with_name("addon_test.py"), "--", *extra], env=environment,
                          stdin=subprocess.DEVNULL)
sys.exit(done.returncode)
