#!/usr/bin/env python3
"""CPU time of a mesh in a batch and in the service: bench/pipeline_cost.py build/release/bin/tessora [--meshes 1000]

Prints user and system time a mesh of everything that ran, and of that what the engine took (the stage `generate` of the
reports, which is wall time: on a busy machine look at the first figure, or count instructions)."""

import argparse
import json
import os
import pathlib
import resource
import shutil
import subprocess
import tempfile


def grid(side):
    """side x side quads over a bowl: positions and polygons."""
    positions = [[i, j, ((i - side / 2) ** 2 + (j - side / 2) ** 2) / side] for j in range(side + 1)
                 for i in range(side + 1)]
    row = side + 1
    polygons = [[j * row + i, j * row + i + 1, (j + 1) * row + i + 1, (j + 1) * row + i] for j in range(side)
                for i in range(side)]
    return positions, polygons


def cube():
    positions = [[i & 1, i >> 1 & 1, i >> 2] for i in range(8)]
    return positions, [[0, 2, 3, 1], [4, 5, 7, 6], [0, 1, 5, 4], [2, 6, 7, 3], [0, 4, 6, 2], [1, 3, 7, 5]]


def obj(positions, polygons):
    lines = ["v " + " ".join(map(str, place)) for place in positions]
    return "\n".join(lines + ["f " + " ".join(str(v + 1) for v in polygon) for polygon in polygons]) + "\n"


def cpu(call):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    result = call()
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return result, after.ru_utime - before.ru_utime, after.ru_stime - before.ru_stime


def show(what, count, user, system, engine):
    print(f"{what}: {1000 * user / count:.2f} ms user, {1000 * system / count:.2f} ms system a mesh, "
          f"of which the engine {1000 * engine / count:.2f} ms")


def measure_batch(program, folder, count, what, mesh):
    shutil.rmtree(folder, ignore_errors=True)
    for number in range(count):
        path = folder / "in" / f"{number:04}.obj"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(obj(*mesh))
    words = [program, "unwrap", folder / "in", "--out_dir", folder / "out", "--jobs", "1", "--quiet"]
    _, user, system = cpu(lambda: subprocess.run(words, check=True))
    engine = sum(json.loads(path.read_text())["seconds"]["generate"] for path in (folder / "out").glob("*.json"))
    show(f"batch, {what}", count, user, system, engine)


def measure_service(program, count, what, request_of):
    lines = "".join(json.dumps(request_of(number)) + "\n" for number in range(count))
    words = [program, "serve", "--queue", "10000"]
    done, user, system = cpu(lambda: subprocess.run(words, input=lines, capture_output=True, text=True, check=True))
    answers = [json.loads(line) for line in done.stdout.splitlines()]
    assert len(answers) == count and all(answer["code"] == 0 for answer in answers)
    show(f"service, {what}", count, user, system, sum(a["report"]["seconds"]["generate"] for a in answers))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("--meshes", type=int, default=1000)
    words = parser.parse_args()
    program, count = os.path.abspath(words.program), words.meshes
    folder = pathlib.Path(tempfile.mkdtemp(prefix="tessora-cost-"))
    try:
        shapes = {"968 triangles": grid(22), "a cube": cube()}
        for what, mesh in shapes.items():
            measure_batch(program, folder / "batch", count, what, mesh)
            inline = {"positions": [x for place in mesh[0] for x in place], "polygons": mesh[1]}
            measure_service(program, count, f"{what} in the request", lambda n: {"id": n, "mesh": inline})
            (folder / "one.obj").write_text(obj(*mesh))
            measure_service(program, count, f"{what} in a file", lambda n: {
                "id": n, "input": str(folder / "one.obj"), "output": str(folder / "one_uv.obj")})
    finally:
        shutil.rmtree(folder)


if __name__ == "__main__":
    main()
