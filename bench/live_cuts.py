#!/usr/bin/env python3
"""How long Live takes to show the unwrap along a new cut: 50 cuts on a sphere of 20,000 triangles.

    bench/live_cuts.py PROGRAM [CUTS]

Drives the window on a virtual screen, as tests/window does. Prints the median and the longest time
from the cut to the result, as the window's console tells them, the median from the key that cuts to
those words, and, for busy machines, the processor
time per cut: of the child process that unwraps, and of the window from the key to the settled result.
"""
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests" / "window"))
from window_driver import Window, run_script  # noqa: E402

TOLD = r"// Live: \d+ charts after ([0-9.]+) s"


def processor_time(process):
    """In seconds, of all its threads."""
    words = pathlib.Path(f"/proc/{process}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(words[11]) + int(words[12])) / os.sysconf("SC_CLK_TCK")


def child_of(process):
    return subprocess.run(["pgrep", "-P", str(process)], stdout=subprocess.PIPE, text=True).stdout.split()[0]


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
            spent, seen = {"window": [], "child": []}, []
            for cut in range(cuts):
                count = len(re.findall(TOLD, window.said()))
                vertex = 173 * cut + 500  # a cut of one edge alone would open nothing
                window.statement(f'select -cl; polySelect -sep {vertex} {vertex + 3} ball; print("picked\\n");',
                                 "picked\n")
                processes = {"window": window.program.pid, "child": child_of(window.program.pid)}
                before = {name: processor_time(process) for name, process in processes.items()}
                begun = time.monotonic()
                window.key("F2", "c")
                window.wait_said(TOLD, count + 1)
                seen.append(time.monotonic() - begun)
                window.settle()
                for name, process in processes.items():
                    spent[name].append(processor_time(process) - before[name])
            times = [float(time) for time in re.findall(TOLD, window.said())][-cuts:]
        finally:
            window.close()
    print(f"{cuts} cuts: median {statistics.median(times):.2f} s, longest {max(times):.2f} s; "
          f"median from the key {statistics.median(seen):.2f} s")
    print("processor time per cut, median: "
          + ", ".join(f"{name} {statistics.median(each):.2f} s" for name, each in spent.items()))


if __name__ == "__main__":
    main()
