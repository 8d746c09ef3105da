#!/usr/bin/env python3
"""What a frame of `tessora view` costs the program itself, beside the OpenGL driver.

    bench/window_frames.py PROGRAM libcount_frames.so [TRIANGLES]    (100000)

The window shows an unwrapped sphere with seams and charts on a virtual screen; the library drops what
the driver would draw and counts frames and uploads. Prints processor time for a frame while the pointer
moves over the mesh and over the texture, while the camera turns, and what happens while nothing does.
Exits with 1 if a frame costs more than 4 ms, a moving pointer uploads anything, or frames are drawn when
nothing happens. The list of positions that the window keeps for this script is part of the cost.
"""
import os
import pathlib
import struct
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests" / "window"))
from window_driver import Window, run_script  # noqa: E402

MOVES = 150


class Counter:
    def __init__(self, window, file):
        self.window, self.file = window, file

    def read(self):
        return struct.unpack("5Q", self.file.read_bytes())

    def measure(self, what, act):
        self.window.settle()
        before = self.read()
        act()
        self.window.settle()
        frames, spent, draws, vertices, uploaded = (
            b - a for a, b in zip(before, self.read()))
        cost = spent / 1e6 / max(1, frames)
        print(f"| {what} | {frames} | {cost:.2f} | {draws / max(1, frames):.0f} "
              f"| {vertices / max(1, frames):,.0f} | {uploaded:,} |", flush=True)
        return frames, cost, uploaded


def moves(window, place, reach):
    """Moves the pointer around a place in small steps, each of which is a frame of its own."""
    x, y = window.place(place)
    words = []
    for i in range(MOVES):
        dx = reach * (2 * (i % 30) / 30 - 1)
        words += ["mousemove", str(round(x + dx)), str(round(y + reach * (i / MOVES - 0.5))),
                  "sleep", "0.02"]
    window.tool(*words)


def turn(window):
    x, y = window.place("panel/modelPanel4")
    window.tool("mousemove", str(x), str(y), "mousedown", "1")
    window.settle()
    moves(window, "panel/modelPanel4", 60)
    window.tool("mouseup", "1")


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    program, library = sys.argv[1:3]
    side = round((int(sys.argv[3] if len(sys.argv) > 3 else 100000) / 2) ** 0.5)
    with tempfile.TemporaryDirectory(prefix="tessora_frames.") as name:
        folder = pathlib.Path(name)
        run_script(program, f"polySphere -n ball -sx {side} -sy {side + 1}; "
                   f'file -f -exportAll "{folder / "ball.obj"}";')
        os.environ["TESSORA_WINDOW_PRELOAD"] = str(pathlib.Path(library).resolve())
        os.environ["TESSORA_COUNTS"] = str(folder / "counts")
        window = Window(program, folder / "pictures", (str(folder / "ball.obj"), "--exec", "tessora;"))
        try:
            window.wait_for("attribute/Unwrap again")
            counter = Counter(window, folder / "counts")
            window.move_to("panel/modelPanel4")
            window.key("F2")
            print("| while | frames | own ms a frame | draws a frame | vertices a frame | bytes uploaded |")
            print("|---|---|---|---|---|---|")
            moved = [counter.measure("the pointer moves over the mesh",
                                     lambda: moves(window, "panel/modelPanel4", 150)),
                     counter.measure("the pointer moves over the texture",
                                     lambda: moves(window, "uv/texture", 150))]
            turned = counter.measure("the camera turns", lambda: turn(window))
            idle = counter.measure("nothing happens, 5 s", lambda: time.sleep(5))
        finally:
            window.close()
    faults = [f"{cost:.2f} ms a frame" for _, cost, _ in [*moved, turned] if cost > 4.0]
    faults += [f"{uploaded} bytes uploaded by a moving pointer" for _, _, uploaded in moved if uploaded]
    faults += [f"{idle[0]} frames while nothing happened"] * (idle[0] > 0)
    sys.exit("; ".join(faults) or 0)


if __name__ == "__main__":
    main()
