#!/usr/bin/env python3
"""How long Live takes to show the unwrap along a new cut: 50 cuts on a sphere of 20,000 triangles.

    bench/live_cuts.py PROGRAM [CUTS]

Drives the window on a virtual screen, as tests/window does. Prints the median and the longest time
from the cut to the result, as the window's console tells them.
"""
import pathlib
import re
import statistics
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests" / "window"))
from window_driver import Window, run_script  # noqa: E402

TOLD = r"// Live: \d+ charts after ([0-9.]+) s"


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    program, cuts = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 50
    with tempfile.TemporaryDirectory(prefix="tessora_live.") as name:
        folder = pathlib.Path(name)
        run_script(program, "polySphere -n ball -sx 100 -sy 101; "
                   f'file -f -exportAll "{folder / "ball.obj"}";')
        window = Window(program, folder / "pictures", (str(folder / "ball.obj"),))
        try:
            window.click_for("tool/Live", "tool/Live/on")
            window.wait_said(TOLD)
            for cut in range(cuts):
                count = len(re.findall(TOLD, window.said()))
                vertex = 173 * cut + 500  # a cut of one edge alone would open nothing
                window.statement(f'select -cl; polySelect -sep {vertex} {vertex + 3} ball; print("picked\\n");',
                                 "picked\n")
                window.key("F2", "c")
                window.wait_said(TOLD, count + 1)
            times = [float(time) for time in re.findall(TOLD, window.said())][-cuts:]
        finally:
            window.close()
    print(f"{cuts} cuts: median {statistics.median(times):.2f} s, longest {max(times):.2f} s")


if __name__ == "__main__":
    main()
