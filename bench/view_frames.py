#!/usr/bin/env python3
"""Prints frame times of one panel with the software renderer, for meshes of 10k, 100k and 1M
triangles. Fails if redraws rebuild or upload any buffer.

    bench/view_frames.py build/release/bin/view_frames [TRIANGLES ...]
"""

import json
import subprocess
import sys

COLUMNS = [("first", "first frame"), ("plain", "shaded"), ("overlay", "with overlay"),
           ("turned", "camera turned")]


def row(figures):
    """One line of the table: wall-clock and, in parentheses, processor milliseconds."""
    cells = [f"{figures['triangles']:,}", f"{figures['seam_edges']:,}"]
    cells += [f"{figures[name + '_wall_ms']:.1f} ({figures[name + '_cpu_ms']:.1f})"
              for name, _ in COLUMNS]
    cells += [str(figures["buffers_rebuilt"]), str(figures["bytes_uploaded"])]
    return "| " + " | ".join(cells) + " |"


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    sizes = sys.argv[2:] or ["10000", "100000", "1000000"]
    heads = ["triangles", "seam edges", *(title + ", ms" for _, title in COLUMNS),
             "buffers rebuilt", "bytes uploaded"]
    print("| " + " | ".join(heads) + " |")
    print("|" + "---|" * len(heads))
    rebuilt = 0
    for size in sizes:
        out = subprocess.run([sys.argv[1], size], check=True, capture_output=True, text=True).stdout
        figures = json.loads(out)
        rebuilt += figures["buffers_rebuilt"] + figures["bytes_uploaded"]
        print(row(figures), flush=True)
    sys.exit(f"redraws rebuilt {rebuilt}" if rebuilt else 0)


if __name__ == "__main__":
    main()
