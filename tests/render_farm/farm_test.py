#!/usr/bin/env python3
"""A batch on a farm: a one-node Slurm of its own runs an array over 200 meshes, tasks are killed midway, the array is
submitted again, and the results are those of an undisturbed run. Root only. farm_test.py PROGRAM SLURM_FOLDER"""

import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM, SCRIPTS = pathlib.Path(sys.argv.pop(1)).resolve(), pathlib.Path(sys.argv.pop(1)).resolve()
MESHES, SHARDS = 200, 8


def wait_until(condition, seconds=120, what="it"):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            raise TimeoutError(f"{what} has not come true in {seconds} s")
        time.sleep(0.02)


def free_port():
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


class Cluster:
    """Slurm and munge with their files in one folder; `stop` ends exactly the processes that were started."""

    def __init__(self, folder):
        self.folder, self.daemons = folder, []
        host = socket.gethostname().split(".")[0]
        (folder / "key").write_bytes(os.urandom(1024))
        (folder / "key").chmod(0o400)
        for name in ("state", "spool"):
            (folder / name).mkdir()
        (folder / "slurm.conf").write_text(f"""
ClusterName=check
SlurmctldHost={host}(127.0.0.1)
SlurmUser=root
SlurmctldPort={free_port()}
SlurmdPort={free_port()}
AuthType=auth/munge
AuthInfo=socket={folder}/munge.socket
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
MpiDefault=none
AccountingStorageType=accounting_storage/none
JobAcctGatherType=jobacct_gather/none
ReturnToService=2
SchedulerParameters=sched_min_interval=100000
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
NodeName={host} NodeAddr=127.0.0.1 CPUs=2 State=UNKNOWN
PartitionName=all Nodes={host} Default=YES MaxTime=INFINITE State=UP
""")
        self.environment = {**os.environ, "SLURM_CONF": str(folder / "slurm.conf"),
                            "PATH": f"{PROGRAM.parent}:{os.environ['PATH']}"}
        self.start("munged", "--foreground", "--force", f"--key-file={folder}/key", f"--socket={folder}/munge.socket",
                   f"--pid-file={folder}/munged.pid", f"--log-file={folder}/munged.log", f"--seed-file={folder}/seed",
                   "--num-threads=1")
        wait_until((folder / "munge.socket").exists, what="munge")
        self.start("slurmctld", "-D", "-f", str(folder / "slurm.conf"))
        self.start("slurmd", "-D", "-f", str(folder / "slurm.conf"), "-N", host)
        wait_until(lambda: "idle" in self.ask("sinfo", "-h", "-o", "%T", check=False), what="an idle node")

    def start(self, *words):
        log = open(self.folder / f"{words[0]}.out", "w")
        self.daemons.append(subprocess.Popen([shutil.which(words[0], path="/usr/sbin:/usr/bin"), *words[1:]],
                                             stdout=log, stderr=log, env=self.environment))
        log.close()

    def ask(self, *words, check=True):
        return subprocess.run(words, check=check, capture_output=True, text=True, env=self.environment).stdout

    def submit(self, *words, **more):
        job = self.ask("sbatch", "--parsable", f"--array=0-{SHARDS - 1}", "--mem=0", f"--chdir={self.folder}",
                       *words).strip()
        return job

    def states(self, job):
        return [line.split()[1] for line in self.ask("squeue", "-h", "-r", "-t", "all", "-j", job, "-o", "%i %T",
                                                      check=False).splitlines()]

    def ended(self, job):
        states = self.states(job)
        return all(state not in ("PENDING", "CONFIGURING", "RUNNING", "COMPLETING") for state in states)

    def stop(self):
        for daemon in reversed(self.daemons):
            daemon.terminate()
        for daemon in reversed(self.daemons):
            try:
                daemon.wait(20)
            except subprocess.TimeoutExpired:
                daemon.kill()
                daemon.wait()


def make_meshes(folder):
    """Open tubes of different sizes, bent a little."""
    for number in range(MESHES):
        columns, rows = 12 + number % 9, 10 + number % 7
        lines = [f"v {1 + 0.1 * (j % 3)} {i} {j * (1 + number % 5) / 7}" for j in range(rows + 1)
                 for i in range(columns + 1)]
        lines += [f"f {j * (columns + 1) + i + 1} {j * (columns + 1) + i + 2} {(j + 1) * (columns + 1) + i + 2} "
                  f"{(j + 1) * (columns + 1) + i + 1}" for j in range(rows) for i in range(columns)]
        path = folder / f"part{number % 10}" / f"mesh {number:03}.obj"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("\n".join(lines) + "\n")


def contents(folder):
    """Every file below a folder; of reports what does not depend on the machine."""
    found = {}
    for path in sorted(folder.rglob("*")):
        if path.is_dir():
            continue
        data = path.read_bytes()
        if path.suffix == ".json":
            report = json.loads(data)
            for key in ("seconds", "peak_mb", "output"):
                report.pop(key)
            data = json.dumps(report).encode()
        found[str(path.relative_to(folder))] = data
    return found


def processes_about(word):
    """Processes of the program that have `word` in their command line, and their workers."""
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        try:
            if entry.name.isdigit() and os.readlink(entry / "exe") == str(PROGRAM) \
                    and word.encode() in (entry / "cmdline").read_bytes():
                children = (entry / "task" / entry.name / "children").read_text().split()
                found += [int(entry.name), *map(int, children)]
        except OSError:
            pass  # it has ended meanwhile
    return found


class Farm(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="tessora-farm-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        make_meshes(cls.folder / "meshes")
        subprocess.run([PROGRAM, "unwrap", cls.folder / "meshes", "--out_dir", cls.folder / "undisturbed", "--quiet"],
                       check=True)
        (cls.folder / "cluster").mkdir()
        cls.cluster = Cluster(cls.folder / "cluster")
        cls.addClassCleanup(cls.cluster.stop)

    def assert_complete(self, results):
        self.assertEqual(contents(results), contents(self.folder / "undisturbed"))

    def test_killed_array_is_completed_by_submitting_it_again(self):
        cluster, results = self.cluster, self.folder / "results"
        words = (str(SCRIPTS / "unwrap_array.sh"), str(self.folder / "meshes"), str(results),
                 "--html", str(self.folder / "page"))
        first = cluster.submit(*words)
        killed = 0
        for share in (0.1, 0.3, 0.5):
            wait_until(lambda: len(list(results.rglob("*.obj"))) > share * MESHES, what="progress")
            for process in processes_about(str(results)):
                try:
                    os.kill(process, signal.SIGKILL)
                    killed += 1
                except ProcessLookupError:
                    pass
        wait_until(lambda: cluster.ended(first), 600, "the end of the first array")
        self.assertGreater(killed, 0)
        self.assertIn("FAILED", cluster.states(first))
        # Whatever was killed, each file under its own name is whole.
        undisturbed = contents(self.folder / "undisturbed")
        for name, data in contents(results).items():
            if ".tessora-tmp." not in name:
                self.assertEqual(data, undisturbed[name], name)
        missing = MESHES - len(list(results.rglob("*.obj")))
        self.assertGreater(missing, 0)
        second = cluster.submit(*words)
        wait_until(lambda: cluster.ended(second), 600, "the end of the second array")
        self.assertEqual(set(cluster.states(second)), {"COMPLETED"})
        self.assert_complete(results)
        print(f"\n{killed} processes killed, {missing} of {MESHES} meshes missing before the second array")
        self.check_reports(results)

    def check_reports(self, results):
        merged = subprocess.run([PROGRAM, "report", "merge", results], check=True, capture_output=True, text=True)
        lines = [json.loads(line) for line in merged.stdout.splitlines()]
        self.assertEqual(len({line["input"] for line in lines[:-1]}), MESHES)
        self.assertEqual((len(lines) - 1, lines[-1]["done"], lines[-1]["failed"]), (MESHES, MESHES, 0))
        shards = sorted((self.folder / "page").glob("shard-*.jsonl"))
        self.assertEqual(len(shards), SHARDS)
        subprocess.run([PROGRAM, "report", "merge", *shards, "--html", self.folder / "page", "-o", "/dev/null"],
                       check=True, capture_output=True)
        rows = [json.loads(line) for line in (self.folder / "page/meshes.jsonl").read_text().splitlines()]
        self.assertEqual(len(rows), MESHES)
        self.assertTrue(all("picture" in row for row in rows))

    def test_parallel_runs_the_shards_of_one_machine(self):
        results = self.folder / "by_parallel"
        subprocess.run([SCRIPTS / "unwrap_parallel.sh", str(SHARDS), self.folder / "meshes", results], check=True,
                       capture_output=True, env=self.cluster.environment)
        self.assert_complete(results)
        self.assertEqual(len((self.folder / "by_parallel.joblog").read_text().splitlines()), SHARDS + 1)


if __name__ == "__main__":
    unittest.main()
