#!/usr/bin/env python3
"""`tessora serve`, talked to as other programs do: serve_test.py PROGRAM"""

import array
import faulthandler
import fcntl
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import termios
import threading
import time
import unittest

PROGRAM = sys.argv.pop(1)
CUBE = ("v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\n"
        "f 4 3 2 1\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n")
MESH = {"positions": [0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1],
        "polygons": [[3, 2, 1, 0], [4, 5, 6, 7], [0, 1, 5, 4], [1, 2, 6, 5], [2, 3, 7, 6], [3, 0, 4, 7]]}


def wait_until(condition):
    end = time.monotonic() + 120
    while not condition():
        if time.monotonic() > end:
            raise TimeoutError("waited in vain")
        time.sleep(0.002)


def give_up(processes):
    """Ends the tests: a service that does not answer, or not read, must fail them and not stop them."""
    for process in processes:
        process.kill()
    print("a test waits for longer than its time", file=sys.stderr)
    faulthandler.dump_traceback()
    os._exit(1)


def unread(pipe):
    count = array.array("i", [0])
    fcntl.ioctl(pipe, termios.FIONREAD, count)
    return count[0]


class Serve(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tessora-serve-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.started = []
        deadline = threading.Timer(150, give_up, [self.started])  # longer than wait_until waits
        deadline.start()
        self.addCleanup(deadline.cancel)
        (self.folder / "cube.obj").write_text(CUBE)

    def path(self, name):
        return str(self.folder / name)

    def start(self, *words, **options):
        process = subprocess.Popen([PROGRAM, "serve", *words], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, **options)
        self.started.append(process)
        self.addCleanup(lambda: (process.kill(), process.wait(), process.stdin.close(), process.stdout.close(),
                                 process.stderr.close()))
        return process

    def send(self, process, *lines):
        for line in lines:
            process.stdin.write((line if isinstance(line, str) else json.dumps(line)).encode() + b"\n")
        process.stdin.flush()

    def receive(self, process):
        return json.loads(process.stdout.readline())

    def ask(self, *lines, words=()):
        """The answers to all lines, and the exit code at the end of the input."""
        process = self.start(*words)
        self.send(process, *lines)
        out, _ = process.communicate()
        return [json.loads(line) for line in out.splitlines()], process.returncode

    def unwrap(self, number, **more):
        return {"id": number, "input": self.path("cube.obj"), "output": self.path(f"out{number}.obj"), **more}

    def occupy(self, process, number=1):
        """Has a worker wait for its input; returns what the input is written to."""
        os.mkfifo(self.path("slow.obj"))
        self.send(process, {"id": number, "input": self.path("slow.obj"), "output": self.path("slow_out.obj")})
        return open(self.path("slow.obj"), "w")  # waits until the worker has opened it

    def all_is_read(self, process):
        wait_until(lambda: unread(process.stdin.fileno()) == 0)

    def assert_refused(self, line, reason, code=2, words=()):
        answers, end = self.ask(line, self.unwrap(7), words=words)
        self.assertEqual((answers[0]["code"], end), (code, 0), answers[0])
        self.assertIn(reason, answers[0]["reason"])
        self.assertEqual((answers[1]["id"], answers[1]["code"]), (7, 0), "the service goes on")
        return answers[0]

    # --- requests -------------------------------------------------------------------------------

    def test_files_are_unwrapped_in_order(self):
        answers, code = self.ask(self.unwrap(1), self.unwrap("two", settings={"padding": 5}))
        self.assertEqual(([a["id"] for a in answers], [a["code"] for a in answers], code), ([1, "two"], [0, 0], 0))
        self.assertEqual(answers[1]["report"]["settings"]["padding"], 5)
        subprocess.run([PROGRAM, "unwrap", self.path("cube.obj"), "-o", self.path("alone.obj"), "--quiet"], check=True)
        self.assertEqual((self.folder / "out1.obj").read_bytes(), (self.folder / "alone.obj").read_bytes())

    def test_output_report_and_picture_are_written(self):
        answers, _ = self.ask(self.unwrap(1, report=self.path("r.json"), layout=self.path("l.png"), picture="stretch"))
        self.assertEqual(answers[0]["code"], 0)
        self.assertEqual(json.loads((self.folder / "r.json").read_text())["status"], "ok")
        self.assertEqual((self.folder / "l.png").read_bytes()[:4], b"\x89PNG")

    def test_mesh_in_a_request_gets_the_same_coordinates_as_its_file(self):
        answers, _ = self.ask({"id": 1, "mesh": MESH})
        result = answers[0]["mesh"]
        subprocess.run([PROGRAM, "unwrap", self.path("cube.obj"), "-o", self.path("alone.obj"), "--quiet"], check=True)
        lines = (self.folder / "alone.obj").read_text().splitlines()
        points = [tuple(map(float, line.split()[1:3])) for line in lines if line.startswith("vt ")]
        corners = [points[int(word.split("/")[1]) - 1] for line in lines if line.startswith("f ")
                   for word in line.split()[1:]]
        uvs = result["uvs"]
        self.assertEqual([(uvs[2 * i], uvs[2 * i + 1]) for i in result["corner_uvs"]], corners)

    def test_seams_of_a_mesh_in_a_request_can_be_kept(self):
        mesh = {**MESH, "uvs": [0, 0, 1, 0, 1, 1, 0, 1], "corner_uvs": [[0, 1, 2, 3]] * 6}
        answers, _ = self.ask({"id": 1, "mesh": mesh, "settings": {"keep_seams": True}})
        self.assertEqual(answers[0]["code"], 0)
        self.assertGreater(answers[0]["report"]["existing_seam_edges"], 0)

    def test_preset_counts_before_settings(self):
        answers, _ = self.ask({"id": 1, "preset": "lightmap", "settings": {"padding": 1}, "mesh": MESH})
        settings = answers[0]["report"]["settings"]
        self.assertEqual((settings["width"], settings["padding"]), (256, 1))

    def test_values_out_of_range_are_warned_of(self):
        answers, _ = self.ask({"id": 1, "mesh": MESH, "settings": {"padding": 99}})
        self.assertIn("--padding 99 counts as 32", answers[0]["report"]["warnings"])

    def test_last_line_needs_no_end(self):
        done = subprocess.run([PROGRAM, "serve"], input=json.dumps(self.unwrap(1)).encode(), capture_output=True)
        self.assertEqual((json.loads(done.stdout)["id"], done.returncode), (1, 0))

    def test_empty_lines_have_no_answer(self):
        answers, _ = self.ask("", "  ", self.unwrap(1))
        self.assertEqual([a["id"] for a in answers], [1])

    def test_failed_mesh_has_its_code_and_reason(self):
        (self.folder / "bad.obj").write_text("f 1 2 3\n")
        answer = self.assert_refused({"id": 1, "input": self.path("bad.obj")}, "face uses vertex 1", code=3)
        self.assertEqual(answer["report"]["status"], "failed")

    # --- what is refused ------------------------------------------------------------------------

    def test_lines_that_are_no_request_are_refused(self):
        for line in ("{", "[1]", "nonsense", '{"id": 1, "settings": {"stretch": NaN}}', '{"id": 1, "x": 1e999}', "\0"):
            self.assertIsNone(self.assert_refused(line, "not a JSON object")["id"], line)

    def test_request_without_a_good_id_is_refused(self):
        for line in ({"input": "x"}, {"id": None}, {"id": [1]}, {"id": 1.5}):
            self.assertIsNone(self.assert_refused(line, "a request needs an 'id'")["id"])

    def test_unknown_and_mistyped_members_are_refused(self):
        for line, reason in (({"id": 1, "inptu": "x"}, "requests have no 'inptu'"),
                             ({"id": 1, "input": 5}, "'input' must be a text"),
                             ({"id": 1, "mesh": MESH, "settings": {"pad": 1}}, "the settings have no 'pad'"),
                             ({"id": 1, "mesh": MESH, "settings": {"stack": "odd"}}, "--stack: 'odd'"),
                             ({"id": 1, "mesh": MESH, "picture": "odd"}, "--picture: 'odd'"),
                             ({"id": 1, "mesh": MESH, "preset": "odd"}, "must be the name of a preset"),
                             ({"id": 1, "mesh": MESH, "preset": "x.json"}, "must be the name of a preset"),
                             ({"id": 1, "mesh": MESH, "thumbnails": "x"}, "no 'thumbnails'"),
                             ({"id": 1, "mesh": MESH, "input": "x"}, "a mesh, or an input"),
                             ({"id": 1}, "which mesh?"), ({"id": 1, "input": "-"}, "stand for no file"),
                             ({"id": 1, "input": "a\0b"}, "stand for no file"),
                             ({"id": 1, "cancel": 2, "input": "x"}, "'cancel' takes the id"),
                             ({"id": 1, "cancel": [2]}, "'cancel' takes the id")):
            self.assertEqual(self.assert_refused(line, reason)["id"], 1)

    def test_faulty_meshes_are_refused_with_the_place(self):
        for change, reason in (({"positions": [0, 0]}, "positions come 3 by 3"),
                               ({"positions": [0, 0, 1e39] * 8}, "positions[2] is not a finite number"),
                               ({"positions": ["x"] * 24}, "positions[0] is not a finite number"),
                               ({"polygons": []}, "needs positions and polygons"),
                               ({"polygons": [[0, 1]]}, "polygons[0] is not a list of three"),
                               ({"polygons": [[0, 1, 2], [0, 1, 8]]}, "polygons[1]: 8 is not an index from 0 to 7"),
                               ({"polygons": [[0, 1, -1]]}, "polygons[0]: -1 is not an index"),
                               ({"polygons": 5}, "'polygons' must be an array"),
                               ({"normals": []}, "no 'normals' in a mesh"),
                               ({"uvs": [0, 0]}, "go together"),
                               ({"uvs": [0, 0], "corner_uvs": []}, "has 0 lists for 6 polygons"),
                               ({"uvs": [0, 0], "corner_uvs": [[0]] * 6}, "corner_uvs[0] does not fit"),
                               ({"uvs": [0, 0], "corner_uvs": [[0, 0, 0, 1]] * 6}, "corner_uvs[0]: 1 is not an index")):
            self.assert_refused({"id": 1, "mesh": {**MESH, **change}}, reason)
        self.assert_refused({"id": 1, "mesh": 5}, "mesh: it must be an object")

    def test_request_that_is_too_large_is_refused(self):
        line = json.dumps({"id": 1, "input": "x" * (3 << 20)})
        self.assert_refused(line, "larger than 1 MiB", code=4, words=["--max_request", "1"])

    def test_request_that_is_too_deep_is_refused(self):
        self.assert_refused('{"id":1,"mesh":' + "[" * 100000 + "]" * 100000 + "}", "nested too deeply")

    def test_full_queue_is_said_and_the_rest_is_done(self):
        process = self.start("--queue", "1")
        with self.occupy(process) as slow:
            self.send(process, self.unwrap(2), self.unwrap(3), self.unwrap(4))
            self.all_is_read(process)
            slow.write(CUBE)
        answers = [self.receive(process) for _ in range(4)]
        self.assertEqual([(a["id"], a["code"]) for a in answers], [(1, 0), (2, 0), (3, 4), (4, 4)])
        self.assertIn("the queue is full: 1 requests wait", answers[2]["reason"])

    # --- while a request runs -------------------------------------------------------------------

    def test_running_request_is_cancelled(self):
        process = self.start()
        with self.occupy(process):
            self.send(process, {"id": 2, "cancel": 1}, self.unwrap(3))
            answers = [self.receive(process) for _ in range(3)]
        self.assertEqual([(a["id"], a["code"]) for a in answers], [(1, 130), (2, 0), (3, 0)])
        self.assertEqual(answers[0]["reason"], "cancelled")
        self.assertFalse((self.folder / "slow_out.obj").exists())

    def test_waiting_request_is_cancelled(self):
        process = self.start()
        with self.occupy(process) as slow:
            self.send(process, self.unwrap(2), {"id": "c", "cancel": 2}, {"id": "d", "cancel": 9})
            self.all_is_read(process)
            slow.write(CUBE)
        answers = [self.receive(process) for _ in range(4)]
        self.assertEqual([(a["id"], a["code"]) for a in answers], [(1, 0), (2, 130), ("c", 0), ("d", 2)])
        self.assertIn("no such request", answers[3]["reason"])
        self.assertFalse((self.folder / "out2.obj").exists())

    def test_crash_costs_one_request(self):
        process = self.start()
        with self.occupy(process):
            children = pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text().split()
            os.kill(int(children[0]), signal.SIGKILL)
            self.send(process, self.unwrap(2))
            answers = [self.receive(process) for _ in range(2)]
        self.assertEqual([(a["id"], a["code"]) for a in answers], [(1, 70), (2, 0)])
        self.assertIn("ended by signal 9", answers[0]["reason"])

    def test_time_limit_gives_up_a_request(self):
        process = self.start("--time_limit", "0.2")
        os.mkfifo(self.path("slow.obj"))  # nobody ever writes into it
        self.send(process, {"id": 1, "input": self.path("slow.obj")}, {"id": 2, "cancel": 9})
        answers = [self.receive(process) for _ in range(2)]
        self.assertEqual([(a["id"], a["code"]) for a in answers], [(1, 4), (2, 2)])
        self.assertIn("time limit of 0.2 s", answers[0]["reason"])

    def test_client_that_does_not_read_is_not_read_from(self):
        process, count = self.start(), 60000

        def worked():  # processor time so far, in ticks
            return sum(map(int, pathlib.Path(f"/proc/{process.pid}/stat").read_text().split()[13:15]))
        writer = threading.Thread(target=lambda: (self.send(process, *["x" * 1000] * count), process.stdin.close()))
        writer.start()
        wait_until(worked)
        idle = 0
        while idle < 8:  # until nothing moves any more
            before = worked()
            time.sleep(0.1)
            idle = idle + 1 if worked() == before else 0
        self.assertTrue(writer.is_alive(), "60 MB of requests were taken in")
        self.assertEqual({self.receive(process)["code"] for _ in range(count)}, {2})
        writer.join()

    def test_closed_output_ends_the_service(self):
        process = self.start()
        process.stdout.close()
        self.send(process, "x")
        self.assertEqual(process.wait(), 7)
        process.stdout = open(os.devnull)

    def test_interrupt_ends_with_its_code(self):
        process = self.start()
        with self.occupy(process):
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(), 130)
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), ["cube.obj", "slow.obj"])

    # --- paths ----------------------------------------------------------------------------------

    def test_root_confines_paths(self):
        root, beyond = self.folder / "root", self.folder / "beyond"
        root.mkdir()
        beyond.mkdir()
        (root / "in.obj").write_text(CUBE)
        (beyond / "secret.obj").write_text(CUBE)
        (root / "link.obj").symlink_to(beyond / "secret.obj")
        (root / "new.obj").symlink_to(beyond / "new.obj")
        (root / "away").symlink_to(beyond)
        words = ("--root", str(root))
        reason = "leads out of the folder"
        for name in ("../beyond/secret.obj", str(beyond / "secret.obj"), "link.obj", "away/secret.obj", "/etc/passwd",
                     "sub/../../beyond/secret.obj", "."):
            answers, _ = self.ask({"id": 1, "input": name, "output": "o.obj"}, words=words)
            self.assertEqual(answers[0]["code"], 2, name)
            self.assertIn(reason, answers[0]["reason"])
        for member in ("output", "report", "layout"):
            for name in ("../beyond/x.obj", "new.obj", "away/x.obj"):
                answers, _ = self.ask({"id": 1, "input": "in.obj", "output": "o.obj", member: name}, words=words)
                self.assertIn(reason, answers[0]["reason"], f"{member} {name}")
        self.assertEqual([path.name for path in beyond.iterdir()], ["secret.obj"])
        answers, _ = self.ask({"id": 1, "input": "in.obj", "output": "o.obj"},
                              {"id": 2, "input": str(root / "in.obj")}, words=words)
        self.assertEqual([a["code"] for a in answers], [0, 0])
        self.assertTrue((root / "o.obj").exists() and (root / "in_uv.obj").exists())

    # --- socket ---------------------------------------------------------------------------------

    def listen(self, *words):
        path = self.path("s.sock")
        process = self.start("--socket", path, *words)
        wait_until(lambda: os.path.exists(path) or process.poll() is not None)
        return process, path

    def connect(self, path):
        client = socket.socket(socket.AF_UNIX)
        self.addCleanup(client.close)

        def is_open():
            try:
                client.connect(path)
                return True
            except (ConnectionRefusedError, FileNotFoundError):
                return False  # it is bound but does not listen yet, or a dead one is being replaced
        wait_until(is_open)
        return client, client.makefile("rw")

    def ask_socket(self, lines, request):
        lines.write(json.dumps(request) + "\n")
        lines.flush()
        return json.loads(lines.readline())

    def test_socket_is_private_and_serves_clients(self):
        process, path = self.listen()
        self.assertEqual(os.stat(path).st_mode & 0o777, 0o600)
        (_, first), (_, second) = self.connect(path), self.connect(path)
        self.assertEqual(self.ask_socket(first, self.unwrap(1))["code"], 0)
        self.assertEqual(self.ask_socket(second, {"id": 2, "cancel": 1})["code"], 2)  # not its own request
        self.assertEqual(self.ask_socket(first, {"id": 3, "mesh": MESH})["code"], 0)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(), 143)
        self.assertFalse(os.path.exists(path))

    def test_client_can_end_its_input_and_read_on(self):
        _, path = self.listen()
        client, lines = self.connect(path)
        client.sendall(json.dumps(self.unwrap(1)).encode())
        client.shutdown(socket.SHUT_WR)
        self.assertEqual(json.loads(lines.readline())["code"], 0)
        self.assertEqual(lines.readline(), "")

    def test_client_that_leaves_gives_up_its_requests(self):
        _, path = self.listen()
        client, lines = self.connect(path)
        os.mkfifo(self.path("slow.obj"))
        lines.write(json.dumps({"id": 1, "input": self.path("slow.obj"), "output": self.path("o.obj")}) + "\n")
        lines.flush()
        with open(self.path("slow.obj"), "w"):
            lines.close()
            client.close()
            _, other = self.connect(path)
            self.assertEqual(self.ask_socket(other, self.unwrap(2))["code"], 0)

    def test_paths_that_are_not_our_dead_socket_are_refused(self):
        path = self.path("s.sock")

        def refused(reason, words=("--socket", path)):
            done = subprocess.run([PROGRAM, "serve", *words], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                  timeout=120)
            self.assertEqual(done.returncode, 7)
            self.assertIn(reason, done.stderr)
        pathlib.Path(path).write_text("mine")
        refused("is not a socket of yours")
        self.assertEqual(pathlib.Path(path).read_text(), "mine")
        os.remove(path)
        os.symlink("elsewhere.sock", path)
        refused("is not a socket of yours")
        os.remove(path)
        _, path = self.listen()
        self.connect(path)
        refused("another service listens there")
        refused("a socket's name has at most 107 bytes", ("--socket", self.path("x" * 120)))
        refused("No such file or directory", ("--socket", self.path("no/s.sock")))
        os.mkdir(self.path("open"))
        os.chmod(self.path("open"), 0o777)
        refused("must be yours", ("--socket", self.path("open/s.sock")))
        refused("cannot be listened on", ("--socket", "/proc/self/fd/s.sock"))  # where nobody can make files

    def test_dead_socket_is_replaced(self):
        process, path = self.listen()
        self.connect(path)
        process.kill()
        process.wait()
        self.assertTrue(os.path.exists(path))
        second = self.start("--socket", path)
        _, lines = self.connect(path)
        self.assertEqual(self.ask_socket(lines, self.unwrap(1))["code"], 0)
        second.terminate()
        second.wait()

    @unittest.skipUnless(os.geteuid() == 0, "needs another user")
    def test_other_users_are_not_served(self):
        os.chmod(self.folder, 0o755)
        _, path = self.listen()
        self.connect(path)
        os.chmod(path, 0o666)
        script = ("import os, socket, sys\nos.setuid(65534)\nc = socket.socket(socket.AF_UNIX)\nc.connect(sys.argv[1])\n"
                  "try:\n    c.sendall(b'x\\n')\n    print(repr(c.recv(10)))\nexcept (BrokenPipeError, ConnectionResetError):\n"
                  "    print(repr(b''))\n")
        done = subprocess.run([sys.executable, "-c", script, path], capture_output=True, text=True)
        self.assertEqual(done.stdout.strip(), "b''", done.stderr)

    # --- the command line -----------------------------------------------------------------------

    def test_faulty_command_lines_are_refused(self):
        for words, reason in ((["x.obj"], "serve takes no files"), (["--queue", "0"], "--queue is 1 to 10000"),
                              (["--max_request", "0"], "--max_request is 1 to 1024"),
                              (["--time_limit", "-1"], "--time_limit must not be negative"),
                              (["--root", self.path("cube.obj")], "is not a folder")):
            done = subprocess.run([PROGRAM, "serve", *words], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                  timeout=120)
            self.assertEqual(done.returncode, 2, words)
            self.assertIn(reason, done.stderr)


if __name__ == "__main__":
    unittest.main()
