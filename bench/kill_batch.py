#!/usr/bin/env python3
"""Kills a batch at random moments and runs it again: in the end everything is as after an undisturbed run, and
at no moment is there a file under its own name that is not whole.

    bench/kill_batch.py build/release/bin/tessora [--meshes 200] [--moments 20] [--seed 1]
"""

import argparse
import json
import os
import pathlib
import random
import shutil
import signal
import subprocess
import tempfile
import threading
import time


def make_meshes(folder, count):
    """Open grids of different sizes, bent a little."""
    for number in range(count):
        columns, rows = 8 + number % 9, 8 + number % 7
        lines = [f"v {i} {j} {((i * i + 3 * j) % (5 + number % 4)) / 9}" for j in range(rows + 1)
                 for i in range(columns + 1)]
        lines += [f"f {j * (columns + 1) + i + 1} {j * (columns + 1) + i + 2} {(j + 1) * (columns + 1) + i + 2} "
                  f"{(j + 1) * (columns + 1) + i + 1}" for j in range(rows) for i in range(columns)]
        path = folder / f"part{number % 10}" / f"mesh{number:03}.obj"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("\n".join(lines) + "\n")


def content(path):
    """A file's bytes; of a report what does not depend on the moment."""
    data = path.read_bytes()
    if path.suffix == ".json":
        report = json.loads(data)
        for key in ("seconds", "peak_mb", "output"):
            report.pop(key, None)
        data = json.dumps(report).encode()
    return data


def contents(folder):
    return {str(path.relative_to(folder)): content(path) for path in sorted(folder.rglob("*"))
            if path.is_file() and ".tessora-tmp." not in path.name}


class Watcher(threading.Thread):
    """Reads whatever has appeared under its own name, again and again."""

    def __init__(self, folder, expected):
        super().__init__()
        self.folder, self.expected, self.ends, self.looks, self.faults = folder, expected, False, 0, []

    def run(self):
        while not self.ends:
            for path in list(self.folder.rglob("*.obj")) + list(self.folder.rglob("*.json")):
                try:
                    data = content(path)
                except (FileNotFoundError, json.JSONDecodeError) as fault:
                    data = str(fault).encode()
                # A mesh whose process was killed alone has a report of a failure until the next run.
                if path.suffix == ".json" and b'"code": 70' in data:
                    continue
                self.looks += 1
                if data != self.expected[str(path.relative_to(self.folder))]:
                    self.faults.append(str(path))
            time.sleep(0.005)


def descendants(process):
    try:
        children = pathlib.Path(f"/proc/{process}/task/{process}/children").read_text().split()
    except OSError:
        return []
    return [int(child) for child in children]


def kill(process):
    try:
        os.kill(process, signal.SIGKILL)
        return 1
    except ProcessLookupError:
        return 0


def run(program, meshes, moments, seed, folder):
    chance = random.Random(seed)
    make_meshes(folder / "in", meshes)
    words = [program, "unwrap", folder / "in", "--jobs", "2", "--skip_existing", "--quiet"]
    subprocess.run([*words, "--out_dir", folder / "undisturbed"], check=True)
    expected = contents(folder / "undisturbed")
    (folder / "out").mkdir()
    watcher = Watcher(folder / "out", expected)
    watcher.start()
    killed, counts = 0, []
    try:
        # A moment is when so many meshes are there, and up to 30 ms later; so they spread over the whole batch.
        for target in sorted(chance.randrange(meshes) for _ in range(moments)):
            batch = subprocess.Popen([*words, "--out_dir", folder / "out"], stderr=subprocess.DEVNULL)
            while batch.poll() is None and len(list((folder / "out").rglob("*.obj"))) < target:
                time.sleep(0.001)
            time.sleep(chance.uniform(0.0, 0.03))
            workers = descendants(batch.pid)
            who = chance.choice(["batch", "worker first", "all"])
            if who != "batch":
                killed += sum(kill(worker) for worker in workers[:None if who == "all" else 1])
            if who == "worker first":  # the batch goes on for a moment
                time.sleep(chance.uniform(0.0, 0.03))
            killed += kill(batch.pid)
            batch.wait()
            counts.append(len(list((folder / "out").rglob("*.obj"))))
        subprocess.run([*words, "--out_dir", folder / "out"], check=True)
    finally:
        watcher.ends = True
        watcher.join()
    assert not watcher.faults, watcher.faults
    assert contents(folder / "out") == expected
    left = [str(path) for path in (folder / "out").rglob("*.tessora-tmp.*")]
    assert not left, left
    print(f"{killed} processes killed at {moments} moments; meshes there after each: {counts}")
    print(f"{watcher.looks} looks at files under their own names, all whole; the end equals an undisturbed run")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("--meshes", type=int, default=200)
    parser.add_argument("--moments", type=int, default=20)
    parser.add_argument("--seed", type=int, default=1)
    words = parser.parse_args()
    folder = pathlib.Path(tempfile.mkdtemp(prefix="tessora-kill-"))
    try:
        run(os.path.abspath(words.program), words.meshes, words.moments, words.seed, folder)
    finally:
        shutil.rmtree(folder)


if __name__ == "__main__":
    main()
