#!/usr/bin/env python3
"""Runs the built program in hostile surroundings and checks exit code, messages and files.

In every case the program must end by itself (unless the case kills it), with a documented exit code, and
unless that is 0 every file must be as it was. Prints a table; fails if a case fails."""

import argparse
import json
import locale
import os
import pathlib
import random
import resource
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import time

CODES = {0, 1, 2, 3, 4, 5, 6, 7}
OLD = b"older result\n"
CASES = []  # (group, name, function)


def case(group, name=None):
    def register(function):
        CASES.append((group, name or function.__name__.replace("_", " "), function))
        return function
    return register


class Skipped(Exception):
    """The machine cannot set the case up."""


def dome(n):
    points = [(2 * i / n - 1, 2 * j / n - 1) for i in range(n + 1) for j in range(n + 1)]
    lines = [f"v {x:.6f} {y:.6f} {-1.2 * (x * x + y * y):.6f}" for x, y in points]
    corners = [i * (n + 1) + j + 1 for i in range(n) for j in range(n)]
    lines += [f"f {a} {a + n + 1} {a + n + 2} {a + 1}" for a in corners]
    return ("\n".join(lines) + "\n").encode()


def is_result_of(result, mesh):
    """Complete: every line of the mesh but texture coordinates, every corner with a coordinate."""
    faces = [line for line in result.splitlines() if line.startswith(b"f ")]
    plain = [b" ".join(word.split(b"/")[0] for word in line.split()) if line.startswith(b"f ") else line
             for line in result.splitlines() if not line.startswith(b"vt ")]
    return plain == mesh.splitlines() and all(line.count(b"/") == len(line.split()) - 1 for line in faces)


class Box:
    """A directory with a mesh, and the program."""

    def __init__(self, program, root):
        self.program, self.root = program, root
        self.mesh = dome(12)
        self.put("m.obj", self.mesh)

    def path(self, name):
        return os.path.join(os.fsencode(self.root), os.fsencode(name))

    def put(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content)
        return self.path(name)

    def get(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def names(self):
        return sorted(os.listdir(os.fsencode(self.root)))

    def run(self, *words, before=None, timeout=60, **options):
        options = {"cwd": self.root, "stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE,
                   "stderr": subprocess.PIPE, **options}
        ended = subprocess.run([self.program, *words], preexec_fn=before, timeout=timeout, **options)
        assert ended.returncode >= 0, f"ended by signal {-ended.returncode}: {ended.stderr}"
        return ended

    def unwrap(self, *words, expected=CODES, **options):
        """Unwraps m.obj over an older m_uv.obj and checks what is left."""
        self.put("m_uv.obj", OLD)
        ended = self.run("unwrap", "m.obj", *words, **options)
        assert ended.returncode in expected, f"exit code {ended.returncode}: {ended.stderr}"
        assert self.get("m.obj") == self.mesh, "the input has changed"
        output = self.get("m_uv.obj")
        if ended.returncode == 0 and "-o" not in words:
            assert is_result_of(output, self.mesh), "the output is not complete"
        else:
            assert output == OLD, f"the output has changed with exit code {ended.returncode}"
        assert not [name for name in self.names() if b"tmp." in name], f"left behind: {self.names()}"
        return ended


# Outputs ---------------------------------------------------------------------------------------------

@case("outputs")
def full_device(box):
    for option in ["-o", "--report", "--layout", "--view"]:
        box.unwrap(option, "/dev/full", expected={5, 7} if option == "--view" else {7})


def in_mount(box, size, mode, words):
    """Runs the program with a small tmpfs at ./disk, in a mount namespace of its own."""
    os.mkdir(box.path("disk"))
    script = (f"mount -t tmpfs -o size={size} none disk && cp m.obj disk/ && printf old > disk/m_uv.obj && "
              f"mount -o remount,{mode} disk; \"$@\"; code=$?; ls disk >&2; cat disk/m_uv.obj; exit $code")
    command = ["unshare", "--mount", "sh", "-c", script, "sh", box.program, *words]
    probe = subprocess.run(["unshare", "--mount", "mount", "-t", "tmpfs", "none", box.path("disk")],
                           capture_output=True)
    if probe.returncode:
        raise Skipped("no right to mount")
    return subprocess.run(command, cwd=box.root, capture_output=True, timeout=60)


@case("outputs")
def full_disk(box):
    ended = in_mount(box, "16k", "rw", ["unwrap", "disk/m.obj"])
    assert ended.returncode == 7 and b"No space left" in ended.stderr, ended
    assert ended.stdout == b"old" and b"tmp." not in ended.stderr.split(b"\n", 3)[-1], ended


@case("outputs")
def read_only_disk(box):
    ended = in_mount(box, "1m", "ro", ["unwrap", "disk/m.obj", "--report", "disk/r.json"])
    assert ended.returncode == 7 and b"Read-only file system" in ended.stderr, ended
    assert ended.stdout == b"old", ended


@case("outputs")
def read_only_folder(box):
    if os.geteuid() != 0:
        os.chmod(box.root, 0o500)
    else:
        os.chmod(box.root, 0o755)
    before = (lambda: os.setresuid(65534, 65534, 65534)) if os.geteuid() == 0 else None
    try:
        ended = box.run("unwrap", "m.obj", before=before)
    finally:
        os.chmod(box.root, 0o700)
    assert ended.returncode == 7 and b"Permission denied" in ended.stderr, ended
    assert box.names() == [b"m.obj"], box.names()


@case("outputs")
def pipe_with_a_reader(box):
    os.mkfifo(box.path("pipe"))
    with subprocess.Popen([box.program, "unwrap", "m.obj", "-o", "pipe"], cwd=box.root,
                          stderr=subprocess.DEVNULL) as process:
        assert is_result_of(box.get("pipe"), box.mesh)
        assert process.wait(60) == 0
    assert stat.S_ISFIFO(os.stat(box.path("pipe")).st_mode)


@case("outputs")
def pipe_without_a_reader_is_interrupted(box):
    os.mkfifo(box.path("pipe"))
    for signum in [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]:
        with subprocess.Popen([box.program, "unwrap", "m.obj", "-o", "pipe"], cwd=box.root,
                              stderr=subprocess.DEVNULL) as process:
            time.sleep(1)
            process.send_signal(signum)
            try:
                assert process.wait(10) == 128 + signum
            finally:
                process.kill()
    assert box.names() == [b"m.obj", b"pipe"], box.names()


@case("outputs")
def links(box):
    os.mkdir(box.path("d"))
    for name in ["exists", "missing"]:
        os.symlink(f"d/{name}", box.path(name))
    box.put("d/exists", OLD)
    os.symlink("loop", box.path("loop"))
    for name in ["exists", "missing"]:
        box.unwrap("-o", name, expected={0})
        assert os.path.islink(box.path(name)) and is_result_of(box.get("d/" + name), box.mesh)
    box.unwrap("-o", "loop", expected={7})
    os.symlink("m.obj", box.path("m.obj.bak"))
    assert box.run("unwrap", "m.obj", "--in_place").returncode == 2
    assert box.get("m.obj") == box.mesh


@case("outputs")
def files_of_one_call_that_are_the_same(box):
    for words in [["-o", "q", "--report", "./q"], ["--in_place", "--report", "m.obj.bak"],
                  ["--report", "x", "--layout", "../" + os.path.basename(box.root) + "/x"],
                  ["--view", "m.obj"], ["-o", "q", "--layout", "d/../q"]]:
        os.makedirs(box.path("d"), exist_ok=True)
        names = box.names()
        assert box.run("unwrap", "m.obj", *words).returncode == 2, words
        assert box.names() == names and box.get("m.obj") == box.mesh, words


@case("outputs")
def planted_temporary_names(box):
    victim = box.put("victim", OLD)
    script = ["-c", 'polyCube; file -rename "s.ma"; file -save; optionVar -sv "v" "1";']

    def plant():  # the program keeps this process's id
        for name in ["m_uv.obj", "s.ma", "o.mel"]:
            os.symlink("victim", box.path(f"{name}.tessora-tmp.{os.getpid()}"))
    assert box.run("unwrap", "m.obj", before=plant).returncode == 0
    environment = {**os.environ, "TESSORA_PREFERENCES": os.fsdecode(box.path("o.mel"))}
    assert box.run(*script, before=plant, env=environment).returncode == 0
    with open(victim, "rb") as file:
        assert file.read() == OLD
    assert all(os.path.isfile(box.path(n)) and not os.path.islink(box.path(n)) for n in ["s.ma", "o.mel"])


# Streams and limits ----------------------------------------------------------------------------------

@case("streams")
def closed_descriptors(box):
    for closed in [[0], [1], [2], [0, 1], [0, 2], [1, 2], [0, 1, 2]]:
        def close(closed=closed):
            for stream in closed:
                os.close(stream)
        box.unwrap("--report", "r.json", before=close, expected={0})
        assert json.loads(box.get("r.json"))["status"] == "ok"


@case("streams")
def devices_as_input(box):
    def limit():
        resource.setrlimit(resource.RLIMIT_AS, (1 << 30, 1 << 30))
    # A folder stands for all meshes in it, which do not fit into one output.
    for source, codes in [("/dev/null", {3}), ("/dev/zero", {4}), (".", {2}), ("/dev/urandom", {3, 4})]:
        assert box.run("unwrap", source, "-o", "out.obj", before=limit).returncode in codes, source
    assert box.names() == [b"m.obj"], box.names()


def limited(box, kind, values):
    ended = None
    for value in values:
        ended = box.unwrap(before=lambda: resource.setrlimit(kind, (value, value)),
                           expected=CODES | {127})
        assert ended.returncode != 127 or b"error while loading" in ended.stderr, ended
    assert ended.returncode == 0, f"fails even with the largest limit: {ended.stderr}"


@case("limits")
def memory(box):
    limited(box, resource.RLIMIT_AS, [mb << 20 for mb in [*range(20, 200, 12), 240, 400, 1000, 4000]])


@case("limits")
def stack(box):
    limited(box, resource.RLIMIT_STACK, [kb << 10 for kb in [256, 512, 1024, 2048, 8192]])


@case("limits")
def open_files(box):
    limited(box, resource.RLIMIT_NOFILE, [*range(3, 16), 64])


@case("limits")
def file_size(box):
    limited(box, resource.RLIMIT_FSIZE, [0, 1, 100, 4096, 8192, 1 << 24])


# SIGKILL ---------------------------------------------------------------------------------------------

def kill_during_write(box, words, watched, delay):
    """Kills the program `delay` seconds after it began to write the temporary file `watched`.PROCESS."""
    with subprocess.Popen([box.program, *words], cwd=box.root, stdin=subprocess.DEVNULL,
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
        draft = box.path(f"{watched}.{process.pid}")
        while process.poll() is None:
            try:
                if os.stat(draft).st_size > 0:
                    break
            except OSError:
                pass
        time.sleep(delay)
        process.kill()


@case("SIGKILL", "in place, 30 moments of the write")
def kill_in_place(box):
    mesh = dome(60)
    for i in range(30):
        box.put("m.obj", mesh)
        kill_during_write(box, ["unwrap", "m.obj", "--in_place"], "m.obj.tessora-tmp", random.uniform(0, 0.02))
        now = box.get("m.obj")
        assert now == mesh or is_result_of(now, mesh), f"kill {i}: the mesh is neither old nor new"
        if b"m.obj.bak" in box.names():
            assert box.get("m.obj.bak") == mesh, f"kill {i}: the backup is not the original"
            os.remove(box.path("m.obj.bak"))
        elif now != mesh:
            raise AssertionError(f"kill {i}: the mesh is new and has no backup")
    assert box.run("unwrap", "m.obj").returncode == 0  # removes what the killed runs left
    assert not [name for name in box.names() if b"tmp." in name], f"left behind: {box.names()}"


@case("SIGKILL", "scene and settings, 30 moments of the write")
def kill_scene(box):
    statements = 'polySphere -sx 300 -sy 300; file -rename "s.ma"; file -save;'
    assert box.run("-c", statements).returncode == 0
    scene = box.get("s.ma")
    for i in range(30):
        kill_during_write(box, ["-c", statements], "s.ma.tessora-tmp", random.uniform(0, 0.05))
        assert box.get("s.ma") == scene, f"kill {i}: the scene is damaged"
    assert box.run("-c", statements).returncode == 0  # removes what the killed runs left
    assert not [name for name in box.names() if b"tmp." in name], f"left behind: {box.names()}"


# Names and surroundings ------------------------------------------------------------------------------

NAMES = [b"a b", b"quote'", b'quote"', b"new\nline", b"%s%n%s", b"\xff\xfe", b"$(touch x)", b"`x`", b"back\\slash",
         b"-dash", b'"; print "INJECTED', b"a;b&c|d", b"\xe5\xbd\xa2\xc3\xa9", b"x" * 240, b"..x", b"tab\t", b"#*?[a]"]


@case("names")
def meshes(box):
    for name in NAMES:
        mesh = name + b".obj"
        box.put(mesh, box.mesh)
        ended = box.run("unwrap", "--beside", "-o", b"./out_" + name[:200] + b".obj", "--", mesh)
        assert ended.returncode == 0, (name, ended.stderr)
        assert b"INJECTED" not in ended.stdout
        assert json.loads(box.get(b"out_" + name[:200] + b".json"))["status"] == "ok", name
        assert is_result_of(box.get(b"out_" + name[:200] + b".obj"), box.mesh), name
        assert box.get(mesh) == box.mesh


@case("names")
def uv_sets(box):
    for name in NAMES:
        ended = box.unwrap("--mapchannel", name, expected={0, 5})
        assert b"INJECTED" not in ended.stdout


@case("names")
def script_arguments_and_files(box):
    script = box.put("print.mel", b"global string $argv[]; print $argv[0];")
    for name in NAMES:
        ended = box.run("script", script, name)
        assert ended.returncode == 0 and ended.stdout.rstrip(b"\n") == name.rstrip(b"\n"), (name, ended)
        path = box.put(name + b".mel", b'print "ran\\n";')
        assert box.run("script", path).stdout == b"ran\n", name


@case("surroundings")
def locale_with_decimal_comma(box):
    box.unwrap("--stretch", "0.05", expected={0}, env={**os.environ, "LC_ALL": "C"})
    plain = box.get("m_uv.obj")
    found = subprocess.run(["locale", "-a"], capture_output=True, text=True, check=True).stdout.split()
    commas = []
    for name in found:
        try:
            locale.setlocale(locale.LC_NUMERIC, name)
        except locale.Error:
            continue
        if locale.localeconv()["decimal_point"] == ",":
            commas.append(name)
    locale.setlocale(locale.LC_NUMERIC, "C")
    if not commas:
        folder = os.fsdecode(box.path("locales"))
        os.mkdir(folder)
        made = subprocess.run(["localedef", "-i", "de_DE", "-f", "UTF-8", folder + "/de_DE.UTF-8"],
                              capture_output=True)
        if not os.path.exists(folder + "/de_DE.UTF-8/LC_NUMERIC"):
            raise Skipped(f"no locale with a comma: {made.stderr.decode()[:60].strip()}")
        os.environ["LOCPATH"] = folder
        commas = ["de_DE.UTF-8"]
    try:
        box.unwrap("--stretch", "0.05", expected={0}, env={**os.environ, "LC_ALL": commas[0]})
    finally:
        os.environ.pop("LOCPATH", None)
    assert box.get("m_uv.obj") == plain


@case("surroundings")
def no_home(box):
    bare = {"PATH": os.environ["PATH"]}
    for environment in [bare, {**bare, "HOME": ""}, {**bare, "HOME": "/nonexistent"},
                        {**bare, "HOME": "/dev/null"}, {}]:
        box.unwrap(expected={0}, env=environment)
        script = box.run("-c", 'optionVar -sv "a" "b"; print `optionVar -q "a"`;', env=environment)
        assert script.returncode in {0, 1}, script


@case("surroundings")
def working_directory_that_is_gone(box):
    mesh, gone = box.path("m.obj"), box.path("gone")
    os.mkdir(gone)
    ended = box.run("unwrap", mesh, before=lambda: (os.chdir(gone), os.rmdir(gone)))
    assert ended.returncode == 0, ended.stderr


@case("surroundings")
def working_directory_with_foreign_code(box):
    os.mkdir(box.path("scripts"))
    for name in ["tessora.so", "libEGL.so.1", "libtessora_host.so", "libc.so.6", "libpng16.so.16", "libm.so.6"]:
        box.put(name, b"not a library")
    for name in ["tessoraCreateUI.mel", "scripts/tessoraCreateUI.mel", "userSetup.mel"]:
        box.put(name, b'print "INJECTED\\n";')
    box.unwrap(expected={0})
    ended = box.run("-c", "loadPlugin tessora; tessoraCreateUI;")
    assert ended.returncode == 0 and b"INJECTED" not in ended.stdout, ended


def run_case(program, function):
    root = tempfile.mkdtemp(prefix="tessora_hostile.")
    try:
        function(Box(program, root))
        return "ok", ""
    except Skipped as reason:
        return "skipped", str(reason)
    except (AssertionError, subprocess.TimeoutExpired, OSError) as fault:
        return "FAILED", str(fault)[:400]
    finally:
        shutil.rmtree(root, ignore_errors=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("--seed", type=int, default=1, help="of the moments of SIGKILL")
    parser.add_argument("-k", metavar="TEXT", default="", help="only cases whose name contains TEXT")
    options = parser.parse_args()
    random.seed(options.seed)
    # Jobs in the background ignore interrupts, and the program would inherit that.
    for signum in [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]:
        signal.signal(signum, signal.default_int_handler)
    program = str(pathlib.Path(options.program).resolve())
    failed = 0
    for group, name, function in CASES:
        if options.k not in name:
            continue
        begin = time.monotonic()
        verdict, reason = run_case(program, function)
        failed += verdict == "FAILED"
        print(f"{group:13} {name:45} {verdict:8} {time.monotonic() - begin:6.1f} s  {reason}", flush=True)
    print(f"{failed} failed" if failed else "all cases hold")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
