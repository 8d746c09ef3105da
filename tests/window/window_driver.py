"""Runs `tessora view` on a virtual screen (Xvfb) and sends it mouse and keyboard events (xdotool).
Widgets are located through the file of positions that the window writes (--places)."""
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import time

# Timeout of every wait in seconds; generous for busy machines and sanitizer builds.
PATIENCE = float(os.environ.get("TESSORA_PATIENCE", "120"))


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
        environment = dict(self.environment)
        if "TESSORA_WINDOW_PRELOAD" in os.environ:  # must not affect Xvfb and xdotool
            environment["LD_PRELOAD"] = os.environ["TESSORA_WINDOW_PRELOAD"]
        with open(self.log, "wb") as log:
            self.program = subprocess.Popen(
                [program, "view", "--size", "1440x900", "--places", str(self.places_file),
                 *arguments], env=environment, stdout=log, stderr=subprocess.STDOUT)
        self.wait(lambda: self.place("menu/File"), "the window to open")
        # Without a window manager nothing sets the keyboard focus.
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
        """Centre of a widget in pixels, or None if it is not shown."""
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
        subprocess.run(["import", "-window", "root", str(self.folder / "failed.png")],
                       env=self.environment, check=False)
        raise SystemExit(f"waited in vain for {what}; it said:\n{self.said()}")

    def has(self, name):
        return self.place(name) is not None

    def wait_for(self, name):
        self.wait(lambda: self.has(name), name)

    def wait_gone(self, name):
        self.wait(lambda: not self.has(name), f"{name} to go")

    def settle(self):
        """Waits until positions and log have not changed for 0.4 s."""
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

    def click_until(self, name, wanted, max_times=6):
        """Clicks until something appears; waits long before it clicks again."""
        for _ in range(max_times):
            self.click(name)
            end = time.monotonic() + PATIENCE / 6
            while time.monotonic() < end:
                if self.has(wanted):
                    return
                time.sleep(0.1)
        raise SystemExit(f"{wanted} did not appear after {max_times} clicks on {name}")

    def choose(self, menu, item, wanted, max_times=5):
        """Picks a menu item; again if the menu was closed or the click came too early."""
        for _ in range(max_times):
            self.click(f"menu/{menu}")
            self.settle()
            if self.has(f"menuitem/{item}"):
                self.click(f"menuitem/{item}")
            self.settle()
            if self.has(wanted):
                return
            self.key("Escape")
            self.settle()
        raise SystemExit(f"{wanted} did not appear after {menu} > {item}")

    def press(self, count=1):
        """Presses and releases the left button where the pointer is."""
        self.tool("click", "--repeat", str(count), "--delay", "60", "1")
        self.settle()

    def double_click_until(self, name, wanted, max_times=20):
        """On a busy machine two clicks may come too far apart to be a double click."""
        self.move_to(name)
        for _ in range(max_times):
            self.press(2)
            if self.has(wanted):
                return
        raise SystemExit(f"{wanted} did not appear after {max_times} double clicks on {name}")

    def drag(self, points):
        """Presses the left button at the first point, releases it at the last."""
        self.tool("mousemove", *map(str, points[0]))
        time.sleep(0.2)
        self.tool("mousedown", "1")
        for point in points[1:]:
            time.sleep(0.15)
            self.tool("mousemove", *map(str, point))
        time.sleep(0.15)
        self.tool("mouseup", "1")
        self.settle()

    def key(self, *keys):
        for key in keys:
            self.tool("key", key)
            time.sleep(0.25)
            if key == "F2":  # else the next key would go into the console
                self.wait_gone("console/field/active")
            if key.startswith("F"):  # F keys move the focus, which takes a few frames
                self.settle()

    def key_until(self, key, name, max_presses=60):
        """Presses a key repeatedly until a widget appears."""
        for _ in range(max_presses):
            if self.has(name):
                return
            self.key(key)
            self.settle()
        raise SystemExit(f"{name} did not appear after {max_presses} times {key}")

    def type(self, text):
        self.tool("type", "--delay", "25", text)
        time.sleep(0.3)

    def statement(self, text, wanted):
        """Types a statement into the console and waits for a new match of `wanted` in the log."""
        count = len(re.findall(wanted, self.said()))
        self.key("F5")
        self.key_until("F5", "console/field/active")  # the first may come before the window listens
        self.type(text)
        self.key("Return")
        self.wait(lambda: len(re.findall(wanted, self.said())) > count,
                  f"'{wanted}' after '{text}'")

    def wait_said(self, pattern, count=1):
        self.wait(lambda: len(re.findall(pattern, self.said())) >= count,
                  f"'{pattern}' to be said {count} times")

    def picture(self, name, while_it_works=False):
        if not while_it_works:
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


def tell(what):
    print(what, flush=True)


def fail_unless(condition, sentence):
    if not condition:
        raise SystemExit(sentence)


def run_script(program, text):
    subprocess.run([program, "-c", text], check=True, stdout=subprocess.DEVNULL)


def drive_on_a_screen(steps, arguments=lambda scratch: ()):
    """Runs `steps(window, scratch)` on a new window; takes PROGRAM and FOLDER from the command line."""
    program, folder = sys.argv[1:3]
    with tempfile.TemporaryDirectory(prefix="tessora_drive.") as name:
        scratch = pathlib.Path(name)
        window = Window(program, folder, arguments(scratch))
        try:
            steps(window, scratch)
        finally:
            window.close()
