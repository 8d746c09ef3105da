#!/usr/bin/env python3
"""Runs the Windows program through Wine as a user would, with and without what it needs.

    program_test.py WITH_WINE TESSORA.exe PLATFORM_ATLAS_FOLDER [unittest arguments]

DISPLAY must lead to an X server with OpenGL."""

import json
import os
import pathlib
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import zlib

WINE, PROGRAM, PLATFORM_ATLAS = sys.argv[1:4]

CUBE = """v 0 0 0
v 1 0 0
v 0 1 0
v 1 1 0
v 0 0 1
v 1 0 1
v 0 1 1
v 1 1 1
f 1 3 4 2
f 5 6 8 7
f 1 2 6 5
f 3 7 8 4
f 1 5 7 3
f 2 4 8 6
"""


class Program(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "cube.obj").write_text(CUBE)

    def run_program(self, *words, program=PROGRAM, **environment):
        # Into files: Wine's own processes would hold a pipe open.
        with tempfile.TemporaryFile("w+") as out, tempfile.TemporaryFile("w+", newline="") as errors:
            done = subprocess.run([WINE, program, *words], cwd=self.folder, stdin=subprocess.DEVNULL,
                                  stdout=out, stderr=errors, timeout=120,
                                  env={**os.environ, **environment})
            out.seek(0)
            errors.seek(0)
            return subprocess.CompletedProcess(done.args, done.returncode, out.read(), errors.read())

    def fresh_server(self):
        """The desktop belongs to the display that it was started with."""
        prefix = os.environ.get("WINEPREFIX", str(pathlib.Path(WINE).resolve().parent.parent / "build/wineprefix"))
        for option in ("-k", "-w"):
            subprocess.run(["wineserver", option], env={**os.environ, "WINEPREFIX": prefix})

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())

    def test_unwraps_a_cube(self):
        done = self.run_program("unwrap", "cube.obj", "-o", "out.obj", "--report", "report.json")
        self.assertEqual(done.returncode, 0, done.stderr)
        report = json.loads((self.folder / "report.json").read_text())
        self.assertEqual((report["status"], report["triangles"]), ("ok", 12))
        self.assertGreaterEqual(report["charts"], 1)
        text = (self.folder / "out.obj").read_text()
        self.assertEqual(text.count("\nf "), 6)
        self.assertGreaterEqual(text.count("\nvt "), 8)
        self.assertNotIn("\r", text)
        self.assertEqual(self.names(), ["cube.obj", "out.obj", "report.json"])

    def test_replaces_an_older_result(self):
        (self.folder / "out.obj").write_text("old")
        done = self.run_program("unwrap", "cube.obj", "-o", "out.obj")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("vt ", (self.folder / "out.obj").read_text())

    def test_writes_pictures_that_are_whole(self):
        done = self.run_program("unwrap", "cube.obj", "-o", "out.obj", "--layout", "layout.png")
        self.assertEqual(done.returncode, 0, done.stderr)
        data = (self.folder / "layout.png").read_bytes()
        self.assertEqual(data[:8], b"\x89PNG\r\n\x1a\n")
        at, kinds, packed = 8, [], b""
        while at < len(data):
            length, kind = struct.unpack(">I4s", data[at:at + 8])
            body = data[at + 8:at + 8 + length]
            check, = struct.unpack(">I", data[at + 8 + length:at + 12 + length])
            self.assertEqual(check, zlib.crc32(kind + body))
            kinds.append(kind)
            if kind == b"IHDR":
                width, height, depth, colours = struct.unpack(">IIBB", body[:10])
            if kind == b"IDAT":
                packed += body
            at += 12 + length
        self.assertEqual((kinds[0], kinds[-1], depth, colours), (b"IHDR", b"IEND", 8, 2))
        self.assertEqual(len(zlib.decompress(packed)), (3 * width + 1) * height)

    def test_runs_a_script(self):
        done = self.run_program("-c", "print(\"sum \" + (1 + 2) + \"\\n\");")
        self.assertEqual((done.returncode, done.stdout), (0, "sum 3\n"))

    def test_missing_input_is_named(self):
        done = self.run_program("unwrap", "absent.obj")
        self.assertEqual(done.returncode, 3)
        self.assertIn("absent.obj: cannot be read: No such file or directory", done.stderr)

    def test_an_interrupt_ends_the_program_with_its_code(self):
        with open(self.folder / "said", "w+", newline="") as said:
            program = subprocess.Popen([WINE, PROGRAM, "-c", 'warning "begun"; while (true) {}'], cwd=self.folder,
                                       stdin=subprocess.DEVNULL, stdout=said, stderr=said)
            try:
                end = time.monotonic() + 60
                while "begun" not in (self.folder / "said").read_text() and time.monotonic() < end:
                    time.sleep(0.05)
                program.send_signal(signal.SIGINT) # Wine turns it into a console event
                self.assertEqual(program.wait(60), 130)
            finally:
                program.kill()
        self.assertIn("tessora: interrupted", (self.folder / "said").read_text())

    def test_without_a_display_there_is_no_direct3d(self):
        self.fresh_server()
        self.addCleanup(self.fresh_server)
        done = self.run_program("unwrap", "cube.obj", "-o", "out.obj", DISPLAY="",
                                WINEDEBUG="-all,+debugstr")
        self.assertEqual(done.returncode, 5, done.stderr)
        self.assertIn('OutputDebugStringA "[CRITICAL]: Direct3DCreate9 failed\\r\\n"', done.stderr)
        self.assertEqual(self.names(), ["cube.obj"])

    def test_a_renderer_without_devices_is_logged(self):
        self.fresh_server()
        self.addCleanup(self.fresh_server)
        # The setting belongs to a program of this name alone.
        program = pathlib.Path(PROGRAM).with_name("tessora_no3d.exe")
        shutil.copy(PROGRAM, program)
        key = r"HKCU\Software\Wine\AppDefaults\tessora_no3d.exe\Direct3D"
        subprocess.run([WINE, "reg", "add", key, "/v", "renderer", "/d", "no3d", "/f"], check=True,
                       capture_output=True)
        done = self.run_program("unwrap", "cube.obj", "-o", "out.obj", program=str(program),
                                DISPLAY="", WINEDEBUG="-all,+debugstr")
        self.assertIn('OutputDebugStringA "[CRITICAL]: CreateDevice failed\\r\\n"', done.stderr)
        self.assertNotEqual(done.returncode, 0)
        self.assertEqual(self.names(), ["cube.obj"])

    def test_an_atlas_call_missing_from_the_platform_is_reported(self):
        done = self.run_program("unwrap", "cube.obj", "-o", "out.obj",
                                MAYA_PLUG_IN_PATH="Z:" + PLATFORM_ATLAS)
        self.assertEqual(done.returncode, 5, done.stderr)
        self.assertIn("D3DXUVAtlasCreate of d3dx9_43.dll", done.stderr)
        self.assertEqual(self.names(), ["cube.obj"])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])
