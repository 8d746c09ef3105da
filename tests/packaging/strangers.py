"""Runs programs of an unpacked package without access to the build tree."""

import pathlib
import subprocess
import tempfile

CONSUMER = pathlib.Path(__file__).resolve().parent / "consumer"
SCRIPT = """loadPlugin tessora;
polyCube -name box;
tessora;
file -force -exportAll "box.obj";
print ("charts " + `getAttr tessora_node1.Charts_result` + "\\n");
"""


def run(*words, **options):
    # Into files: processes that Wine leaves running would keep a pipe open.
    with tempfile.TemporaryFile("w+") as out, tempfile.TemporaryFile("w+") as errors:
        done = subprocess.run([str(word) for word in words], stdin=subprocess.DEVNULL, stdout=out, stderr=errors,
                              timeout=1500, **options)  # compiling takes long on a busy machine
        out.seek(0)
        errors.seek(0)
        return subprocess.CompletedProcess(done.args, done.returncode, out.read(), errors.read())


def unpack_one(folder, pattern, target, cmake):
    """Unpacks the only package that matches pattern; returns the folder that it contains."""
    package, = pathlib.Path(folder).glob(pattern)
    target.mkdir()
    run(cmake, "-E", "tar", "xf", package, cwd=target).check_returncode()
    content, = target.iterdir()
    return content


def use_program(test, command, environment):
    """Makes, unwraps and exports a mesh by a script, then unwraps the export from the command line."""
    with tempfile.TemporaryDirectory() as work:
        (pathlib.Path(work) / "box.mel").write_text(SCRIPT)
        done = run(*command, "script", "box.mel", cwd=work, env=environment)
        test.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        test.assertRegex(done.stdout, r"charts [1-9]")
        done = run(*command, "unwrap", "box.obj", "-o", "out.obj", cwd=work, env=environment)
        test.assertEqual(done.returncode, 0, done.stderr)
        test.assertIn("\nvt ", (pathlib.Path(work) / "out.obj").read_text())


def use_engine(test, prefix, cmake, consumer, *words):
    """Builds tests/packaging/consumer against the packaged engine and runs it. consumer: maps the folder it was
    built in to the command that runs it."""
    with tempfile.TemporaryDirectory() as work:
        done = run(cmake, "-S", CONSUMER, "-B", work, f"-DCMAKE_PREFIX_PATH={prefix}", *words)
        test.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        done = run(cmake, "--build", work)
        test.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        done = run(*consumer(pathlib.Path(work)))
        test.assertEqual((done.returncode, done.stdout), (0, "the atlas was made, charts: 1\n"))
