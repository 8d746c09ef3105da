"""Runs `tessora view` on a virtual screen (Xvfb) and sends it mouse and keyboard events (xdotool).
Widgets are located through the file of positions that the window writes (--places)."""
import contextlib
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
    """`size`: of the screen and the window, in pixels. `preferences`: statements kept from an
    earlier start."""
    def __init__(self, program, folder, arguments=(), size="1440x900", preferences=""):
        self.folder = pathlib.Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)
        for picture in self.folder.glob("*.png"):  # of an earlier run, which may have other steps
            picture.unlink()
        self.scratch = tempfile.TemporaryDirectory(prefix="tessora_window.")
        scratch = pathlib.Path(self.scratch.name)
        self.places_file = scratch / "places"
        self.log = scratch / "log"
        self.preferences_file = scratch / "preferences.mel"
        self.preferences_file.write_text(preferences)
        reader, writer = os.pipe()
        self.screen = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{size}x24", "-nolisten", "tcp"],
            pass_fds=[writer], stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as pipe:
            number = pipe.readline().strip()
        self.environment = dict(os.environ, DISPLAY=f":{number}",
                                TESSORA_PREFERENCES=str(self.preferences_file))
        environment = dict(self.environment)
        if "TESSORA_WINDOW_PRELOAD" in os.environ:  # must not affect Xvfb and xdotool
            environment["LD_PRELOAD"] = os.environ["TESSORA_WINDOW_PRELOAD"]
        with open(self.log, "wb") as log:
            self.program = subprocess.Popen(
                [program, "view", "--size", size, "--places", str(self.places_file),
                 *arguments], env=environment, stdout=log, stderr=subprocess.STDOUT)
        try:
            self.wait(lambda: self.place("menu/File"), "the window to open")
        except SystemExit:
            self.close()  # or the screen would stay
            raise
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
                process.wait(PATIENCE)
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
        self.give_up(f"waited in vain for {what}")

    def give_up(self, why):
        """Ends the drive; a screenshot and the list of places tell what was on the screen."""
        subprocess.run(["import", "-window", "root", str(self.folder / "failed.png")],
                       env=self.environment, check=False)
        if self.places_file.exists():
            (self.folder / "failed.places").write_text(self.places_file.read_text())
        raise SystemExit(f"{why}; it said:\n{self.said()}")

    def has(self, name):
        return self.place(name) is not None

    def wait_for(self, name):
        self.wait(lambda: self.has(name), name)

    def wait_gone(self, name):
        self.wait(lambda: not self.has(name), f"{name} to go")

    def settle(self):
        """Waits until the window says that nothing moves in it, and nothing was said, for 0.3 s."""
        before = None

        def has_settled():
            nonlocal before
            last, before = before, (self.places_file.read_text(), self.said())
            if before == last and "\nsettled\t" in before[0]:
                return True
            time.sleep(0.25)
            return False
        self.wait(has_settled, "the window to settle")

    def move_to(self, name):
        self.wait_for(name)
        self.settle()
        x, y = self.wait(lambda: self.place(name), name)
        self.tool("mousemove", str(x), str(y))

    def click(self, name):
        self.move_to(name)
        self.press()

    def click_for(self, name, wanted):
        """One click, and waits for what it is to show."""
        self.click(name)
        self.wait_for(wanted)

    def choose(self, menu, item, wanted):
        """Picks a menu item, and waits for what it is to show."""
        self.click_for(f"menu/{menu}", f"menuitem/{item}")
        self.click_for(f"menuitem/{item}", wanted)

    def wait_ready(self):
        """Waits until nothing is computed or moves: input is lost while the progress is shown."""
        self.wait(lambda: "\nsettled\t" in self.places_file.read_text(), "the window to be ready")

    def press(self, count=1):
        """Presses and releases the left button where the pointer is."""
        self.wait_ready()
        self.tool(*["mousedown", "1", "mouseup", "1"] * count)

    def double_click_for(self, name, wanted):
        self.move_to(name)
        self.press(2)
        self.wait_for(wanted)

    @contextlib.contextmanager
    def between_two_frames(self):
        """All keys and clicks sent inside reach the program at once."""
        self.settle()
        os.kill(self.program.pid, signal.SIGSTOP)
        try:
            yield
        finally:
            os.kill(self.program.pid, signal.SIGCONT)

    def drag(self, points):
        """Presses the left button at the first point, releases it at the last."""
        words = ["mousemove", *points[0], "mousedown", 1]
        for point in points[1:]:
            words += ["mousemove", *point]
        self.tool(*map(str, words), "mouseup", "1")

    def key(self, *keys):
        self.wait_ready()
        self.tool("key", *keys)

    def keys_taken(self):
        """Number of key presses that the window has seen."""
        return int(re.search(r"^keys/(\d+)", self.places_file.read_text(), re.MULTILINE)[1])

    def key_until(self, key, name, max_presses=60):
        """Presses a key repeatedly until a widget appears."""
        for _ in range(max_presses):
            if self.has(name):
                return
            taken = self.keys_taken()
            self.key(key)  # the next one only when it was seen, or two would pass the widget by
            self.wait(lambda: self.keys_taken() > taken, f"the key {key} to be taken")
            self.settle()
        self.give_up(f"{name} did not appear after {max_presses} times {key}")

    def type(self, text):
        self.tool("type", "--delay", "2", text)

    def statement(self, text, wanted):
        """Types a statement into the console and waits for a new match of `wanted` in the log."""
        count = len(re.findall(wanted, self.said()))
        self.key("F5")
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


def colours(window, name):
    """Number of pixels of every colour in the last screenshot."""
    picture = sorted(window.folder.glob(f"*_{name}.png"))[-1]
    lines = subprocess.run(["convert", str(picture), "-format", "%c", "histogram:info:-"],
                           check=True, stdout=subprocess.PIPE, text=True).stdout.splitlines()
    return {line.split("#")[1][:6]: int(line.split(":")[0]) for line in lines if "#" in line}


def corners(window, scratch):
    """The texture coordinates of the corners, in the order of the faces."""
    file = scratch / "now.obj"
    window.statement(f'file -f -exportAll "{file}"; print("written\\n");', "written\n")
    lines = file.read_text().splitlines()
    uvs = [tuple(map(float, line.split()[1:3])) for line in lines if line.startswith("vt ")]
    return [uvs[int(corner.split("/")[1]) - 1] for line in lines if line.startswith("f ")
            for corner in line.split()[1:]]


def shells(window, count):
    """Fails unless the mesh `sheet` has so many pieces in the texture."""
    window.statement("polyEvaluate -us sheet;", rf"Result: {count}\n")


def make_sheet(scratch):
    """A mesh of 4 x 4 squares; edges 2 and 22 are the ends of a line through its middle."""
    run_script(sys.argv[1], 'polyPlane -n sheet -sx 4 -sy 4; '
               f'file -f -exportAll "{scratch / "sheet.obj"}";')
    return (str(scratch / "sheet.obj"),)


def write_squares(file, first, second):
    """Two squares with an edge in common, each with the texture rectangle (left, bottom, right, top)."""
    lines = [f"v {x} {y} 0" for y in (0, 2) for x in (0, 2, 4)]
    for left, bottom, right, top in (first, second):
        lines += [f"vt {u} {v}" for u, v in ((left, bottom), (right, bottom), (right, top), (left, top))]
    lines += ["f 1/1 2/2 5/3 4/4", "f 2/5 3/6 6/7 5/8"]
    file.write_text("\n".join(lines) + "\n")


def choose_file(window, keys, file):
    """Presses the keys that ask for a file and names it."""
    window.key(*keys)
    window.wait_for("file/path/active")
    window.key("ctrl+a")
    window.type(str(file))
    window.key("Return")


def quit_without_saving(window):
    """Fails if an error was said."""
    fail_unless("Error" not in window.said(), "there was an error:\n" + window.said())
    window.key("F2", "ctrl+q")
    window.wait(lambda: window.program.poll() is not None or window.has("question/Discard them"),
                "the question")
    if window.program.poll() is None:
        window.click("question/Discard them")
    window.wait_end()


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
