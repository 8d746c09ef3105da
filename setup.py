"""Builds the Python package: CMake compiles, setuptools packs. `pip install .` from this folder; without a
network: /usr/bin/python3 -m pip wheel . --no-build-isolation --no-deps --no-index"""

import os
import pathlib
import re
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).resolve().parent
VERSION = re.search(r"project\(tessora VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())[1]


class CMakeBuild(build_ext):
    def build_extension(self, extension):
        target = pathlib.Path(self.get_ext_fullpath(extension.name)).resolve()
        build = pathlib.Path(self.build_temp).resolve()
        subprocess.run(["cmake", "-S", ROOT, "-B", build, "-DCMAKE_BUILD_TYPE=Release", "-DTESSORA_ONLY_PYTHON=ON",
                        f"-DPython_EXECUTABLE={sys.executable}"], check=True)
        subprocess.run(["cmake", "--build", build, "--target", "tessora_python", "--parallel",
                        str(os.cpu_count() or 1)], check=True)
        target.parent.mkdir(parents=True, exist_ok=True)
        self.copy_file(str(build / "python" / "tessora" / target.name), str(target))


setup(version=VERSION, ext_modules=[Extension("tessora._engine", [])], cmdclass={"build_ext": CMakeBuild})
