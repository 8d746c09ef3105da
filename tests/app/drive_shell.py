#!/usr/bin/env python3
"""Types into `tessora shell` on a pseudo terminal: UTF-8 arrives, Ctrl-C cancels a line and a
statement, and the scene stays.

    drive_shell.py PROGRAM
"""
import os
import pty
import re
import select
import sys
import tempfile
import time

PATIENCE = float(os.environ.get("TESSORA_PATIENCE", "60"))


class Shell:
    def __init__(self, program, folder):
        self.said = ""
        self.pid, self.file = pty.fork()
        if self.pid == 0:
            os.environ["TESSORA_PREFERENCES"] = os.path.join(folder, "preferences.mel")
            os.environ["LC_ALL"] = "C"
            os.environ["TERM"] = "dumb"
            os.execv(program, [program, "shell"])
        self.wait("tessora> ")

    def wait(self, pattern):
        """Waits until what was said since the last match contains the pattern."""
        end = time.monotonic() + PATIENCE
        while not re.search(pattern, self.said):
            if time.monotonic() > end:
                raise SystemExit(f"waited in vain for {pattern!r}; it said:\n{self.said}")
            if select.select([self.file], [], [], 0.2)[0]:
                self.said += os.read(self.file, 65536).decode("utf-8", "replace")
        match = re.search(pattern, self.said)
        self.said = self.said[match.end():]
        return match

    def type(self, text):
        os.write(self.file, text.encode())

    def line(self, text, pattern):
        self.type(text + "\n")
        self.wait(pattern)
        self.wait("tessora> ")


def main():
    with tempfile.TemporaryDirectory() as folder:
        shell = Shell(sys.argv[1], folder)
        shell.line('string $s = "größe 网"; print ("<" + $s + ">\\n");', "\n<größe 网>\r?\n")
        shell.line("polyCube -n kept;", "Result: kept")
        shell.type("polySphere -n unwan")
        shell.wait("unwan")  # it has been read, as its echo tells
        shell.type("\x03")
        shell.wait("tessora> ")
        shell.type("{ print 1;\n")
        shell.wait(r"\.\.\.> ")
        shell.type("\x03")
        shell.wait("tessora> ")
        # At once after each prompt: the key must not fall between the prompt and the wait for it.
        for _ in range(100):
            shell.type("\x03")
            shell.wait("tessora> ")
        shell.type('print ("be" + "gun"); int $count; while (1) { $count++; }\n')
        shell.wait("begun")
        shell.type("\x03")
        shell.wait("Interrupted")
        shell.wait("tessora> ")
        shell.line('print (size(`ls -type mesh`) + size(`ls kept`) + " left\\n");', "2 left\r?\n")
        shell.type("quit;\n")
        _, status = os.waitpid(shell.pid, 0)
        if status != 0:
            raise SystemExit(f"the shell ended with {status}")
    print("typed, cancelled, quit")


if __name__ == "__main__":
    main()
