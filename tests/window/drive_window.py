#!/usr/bin/env python3
"""Drives `tessora view` with a mouse and a keyboard on a screen of its own, as a person would.

    drive_window.py PROGRAM FOLDER    screenshots of every step go to FOLDER

Opens a mesh, unwraps it by the menu, changes the stretch on the node, unwraps again, undoes twice,
saves. Fails with a sentence when a step does not lead where it should.
"""
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import time

PATIENCE = 120.0  # seconds for any one thing; machines that test are busy


class Window:
    def __init__(self, program, folder, arguments=()):
        self.folder = pathlib.Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)
        self.scratch = tempfile.TemporaryDirectory(prefix="tessora_window.")
        scratch = pathlib.Path(self.scratch.name)
        self.places_file = scratch / "places"
        self.log = scratch / "log"
        reader, writer = os.pipe()
        self.screen = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", "1440x900x24", "-nolisten", "tcp"],
            pass_fds=[writer], stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as pipe:
            number = pipe.readline().strip()
        self.environment = dict(os.environ, DISPLAY=f":{number}",
                                TESSORA_PREFERENCES=str(scratch / "preferences.mel"))
        with open(self.log, "wb") as log:
            self.program = subprocess.Popen(
                [program, "view", "--size", "1440x900", "--places", str(self.places_file),
                 *arguments], env=self.environment, stdout=log, stderr=subprocess.STDOUT)
        self.wait(lambda: self.place("menu/File"), "the window to open")
        # Nobody manages windows on this screen, so nobody hands out the keyboard.
        found = self.tool("search", "--name", "Tessora").split()
        self.tool("windowmove", found[0], "0", "0")
        self.tool("windowfocus", "--sync", found[0])
        self.settle()
        self.step = 0

    def close(self):
        for process in (self.program, self.screen):
            if process.poll() is None:
                process.send_signal(signal.SIGTERM)
                process.wait(10)
        self.scratch.cleanup()

    def tool(self, *words):
        return subprocess.run(["xdotool", *words], env=self.environment, check=True,
                              stdout=subprocess.PIPE, text=True).stdout

    def said(self):
        return self.log.read_text(errors="replace")

    def place(self, name):
        """Middle of a thing on the screen, or None."""
        try:
            lines = self.places_file.read_text().splitlines()
        except FileNotFoundError:
            return None
        for line in lines:
            words = line.split("\t")
            if words[0] == name:
                left, top, width, height = map(int, words[1:])
                return left + width // 2, top + height // 2
        return None

    def wait(self, condition, what):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            value = condition()
            if value:
                return value
            if self.program.poll() is not None:
                raise SystemExit(f"the program ended while waiting for {what}:\n{self.said()}")
            time.sleep(0.05)
        raise SystemExit(f"waited in vain for {what}; it said:\n{self.said()}")

    def settle(self):
        """Until the window has stood still for a while."""
        before = None
        while True:
            now = self.places_file.read_text(), self.said()
            if now == before:
                return
            before = now
            time.sleep(0.4)

    def move_to(self, name):
        x, y = self.wait(lambda: self.place(name), name)
        self.settle()
        x, y = self.wait(lambda: self.place(name), name)
        self.tool("mousemove", str(x), str(y))
        time.sleep(0.3)

    def click(self, name, count=1):
        self.move_to(name)
        for _ in range(count):
            self.tool("mousedown", "1")
            time.sleep(0.12)
            self.tool("mouseup", "1")
            time.sleep(0.08)
        time.sleep(0.3)

    def key(self, *keys):
        for key in keys:
            self.tool("key", key)
            time.sleep(0.25)

    def type(self, text):
        self.tool("type", "--delay", "25", text)
        time.sleep(0.3)

    def statement(self, text, wanted):
        """Types a statement into the console and waits for a line that it prints."""
        count = len(re.findall(wanted, self.said()))
        self.key("F5")
        self.wait(lambda: self.place("console/field/active"), "the console to listen")
        self.type(text)
        self.key("Return")
        self.wait(lambda: len(re.findall(wanted, self.said())) > count,
                  f"'{wanted}' after '{text}'")

    def wait_said(self, pattern, count=1):
        self.wait(lambda: len(re.findall(pattern, self.said())) >= count,
                  f"'{pattern}' to be said {count} times")

    def picture(self, name):
        self.wait(lambda: not self.place("progress"), "the progress window to go")
        self.settle()
        self.step += 1
        subprocess.run(["import", "-window", "root", str(self.folder / f"{self.step:02}_{name}.png")],
                       env=self.environment, check=True)

    def wait_end(self):
        try:
            code = self.program.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            raise SystemExit("the program does not quit") from None
        if code != 0:
            raise SystemExit(f"the program ended with {code}:\n{self.said()}")


SPHERE = """global proc writeBall(string $file) {
    polySphere -n ball -r 3 -sx 48 -sy 32;
    polyTorus -n ring -r 5 -sr 0.8 -sx 60 -sy 16;
    file -f -exportAll $file;
}
writeBall(%s);
"""


def tell(what):
    print(what, flush=True)


def drive(window, mesh, scene):
    published = r"Stretch_result\" [0-9.]+"
    window.key("ctrl+o")
    window.wait(lambda: window.place("file/path/active"), "the question for a file")
    window.picture("open_dialog")
    window.type(str(mesh))
    window.key("Return")
    window.wait_said("Result: .*ball.obj")
    window.picture("opened")
    tell("opened")

    window.click("panel/modelPanel4")
    window.click("menu/Modify")
    window.wait(lambda: window.place("menuitem/Tessora"), "the menu item")
    window.picture("modify_menu")
    window.click("menuitem/Tessora")
    window.wait(lambda: window.place("control/tessora_unwrap"), "the dialog")
    window.picture("options_dialog")
    window.click("control/tessora_unwrap")
    window.wait_said(published)
    window.wait(lambda: not window.place("dialog/tessoraWindow"), "the dialog to close")
    window.picture("unwrapped")
    tell("unwrapped by the menu")

    window.click("attribute/Stretch")
    window.wait(lambda: window.place("attribute/Stretch/active"), "the field to listen")
    window.key("ctrl+a")
    window.type("0.01")
    window.key("Return")
    window.statement("getAttr tessora_node1.Stretch;", r"Result: 0\.0099|Result: 0\.01")
    window.picture("stretch_changed")
    window.click("attribute/Unwrap again")
    window.wait_said(published, 2)
    window.picture("unwrapped_again")
    stretch = [float(text) for text in re.findall(r"Stretch_result\" ([0-9.]+)", window.said())]
    if not stretch[1] <= 0.01 < stretch[0]:
        raise SystemExit(f"the limit 0.01 gave a stretch of {stretch[1]} after {stretch[0]}")
    tell(f"unwrapped again: stretch {stretch[0]}, then {stretch[1]}")

    window.move_to("chart/2")
    window.wait(lambda: window.place("lit/2") and window.place("lit_on_mesh/2"),
                "the chart under the pointer to light up, on the mesh too")
    window.picture("chart_under_the_pointer")
    window.move_to("menu/Help")
    window.wait(lambda: "\nlit" not in window.places_file.read_text(), "no chart to be lit")
    window.move_to("panel/modelPanel4")
    window.wait(lambda: "\nlit/" in window.places_file.read_text(),
                "the chart under the pointer in a model panel to light up")
    window.picture("chart_under_the_pointer_on_the_mesh")
    tell("lit charts both ways")
    window.move_to("menu/Help")
    window.wait(lambda: "\nlit" not in window.places_file.read_text(), "no chart to be lit")
    window.key("F2", "ctrl+z", "ctrl+z")
    window.statement("getAttr tessora_node1.Stretch;", r"Result: 0\.15")
    window.picture("undone_twice")
    tell("undone twice")

    window.key("ctrl+s")
    window.wait(lambda: window.place("file/path/active"), "the question for a name")
    window.type(str(scene))
    window.key("Return")
    window.wait(lambda: scene.exists(), "the scene's file")
    window.picture("saved")
    if "createNode tessora_node" not in scene.read_text():
        raise SystemExit("the saved scene has no tessora_node")
    tell("saved")
    window.key("ctrl+q")
    window.wait_end()


def main():
    program, folder = sys.argv[1:3]
    with tempfile.TemporaryDirectory(prefix="tessora_drive.") as scratch:
        mesh = pathlib.Path(scratch) / "ball.obj"
        subprocess.run([program, "-c", SPHERE % f'"{mesh}"'], check=True,
                       stdout=subprocess.DEVNULL)
        window = Window(program, folder)
        try:
            drive(window, mesh, pathlib.Path(scratch) / "ball.ma")
        finally:
            window.close()


if __name__ == "__main__":
    main()
