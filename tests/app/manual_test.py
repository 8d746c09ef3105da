#!/usr/bin/env python3
"""Manual pages and completion of the built program: manual_test.py PROGRAM FOLDER_OF_THE_MANUAL"""

import pathlib
import re
import subprocess
import sys
import unittest

PROGRAM, MANUAL = str(pathlib.Path(sys.argv.pop(1)).resolve()), pathlib.Path(sys.argv.pop(1)).resolve()


def output(*words, **options):
    return subprocess.run(words, check=True, capture_output=True, text=True, **options).stdout


def commands():
    listed = output(PROGRAM, "--help").split("commands:\n")[1].split("\n\n")[0]
    return [line.split()[0] for line in listed.splitlines() if line.split()[0] not in ("manual", "completion")]


def options(command):
    """Of --help: [(--name, -x or None)]."""
    found = re.findall(r"^  (?:(-\w), )?(--\w+)", output(PROGRAM, command, "--help"), re.M)
    return [(name, short or None) for short, name in found]


def rendered(page):
    done = subprocess.run(["groff", "-man", "-Tutf8", "-ww", str(page)], check=True, capture_output=True, text=True,
                          env={"GROFF_NO_SGR": "1", "MANWIDTH": "200", "PATH": "/usr/bin:/bin"})
    return re.sub(".\x08", "", done.stdout), done.stderr


class Manual(unittest.TestCase):
    def test_every_command_has_options(self):
        for command in commands():
            self.assertIn(("--help", "-h"), options(command), command)
        self.assertGreater(len(options("unwrap")), 40)

    def test_every_option_of_the_help_is_in_the_page(self):
        for command in commands():
            text, complaints = rendered(MANUAL / "man1" / f"tessora-{command}.1")
            self.assertEqual(complaints, "", command)
            # Hyphens that are minus signs, so that options can be copied.
            entries = set(re.findall(r"^ +(?:(-\w), )?(--\w+)", text, re.M))
            for name, short in options(command):
                self.assertIn((short or "", name), entries, command)
            for section in ("NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXAMPLES"):
                self.assertRegex(text, rf"(?m)^{section}$", command)

    def test_overview_lists_the_commands(self):
        text, complaints = rendered(MANUAL / "man1" / "tessora.1")
        self.assertEqual(complaints, "")
        for command in commands():
            self.assertIn(f"tessora-{command}(1)", text)

    def test_unknown_names_are_refused(self):
        for words in (["manual", "nothing"], ["completion"], ["completion", "tcsh"]):
            done = subprocess.run([PROGRAM, *words], capture_output=True, text=True)
            self.assertEqual(done.returncode, 2)
            self.assertIn(f"usage: tessora {words[0]}", done.stderr)


class Bash(unittest.TestCase):
    def complete(self, lines):
        """What each line's last word can become."""
        script = f"source {MANUAL}/tessora.bash\n"
        for words in lines:
            quoted = " ".join("'" + word + "'" for word in words)
            script += (f"COMP_WORDS=(tessora {quoted}); COMP_CWORD={len(words)}; _tessora\n"
                       'echo "${COMPREPLY[*]}"\n')
        return [line.split() for line in output("bash", "--norc", "-c", script, cwd=MANUAL).splitlines()]

    def test_every_option_completes(self):
        for command in commands():
            names = [name for name, _ in options(command)]
            for name, found in zip(names, self.complete([[command, name[:-1]] for name in names])):
                self.assertIn(name, found, command)

    def test_commands_values_and_files_complete(self):
        found = self.complete([["unw"], ["unwrap", "--picture", "ch"], ["unwrap", "--preset", "ba"],
                               ["unwrap", "tessora.b"], ["unwrap", "--out_dir", "ma"], ["unwrap", "--width", ""],
                               ["report", "m"], ["completion", "z"], ["unwrap", "-o", "tessora.f"]])
        self.assertEqual(found, [["unwrap"], ["checker"], ["bake"], ["tessora.bash"], ["man1"], [], ["merge"],
                                 ["zsh"], ["tessora.fish"]])


class Fish(unittest.TestCase):
    def test_every_option_completes(self):
        for command in commands():
            names = [name for name, _ in options(command)]
            script = f"source {MANUAL}/tessora.fish\n" + "".join(
                f"complete -C 'tessora {command} {name[:-1]}' | string split -f 1 \\t | string join ' '; echo\n"
                for name in names)
            found = output("fish", "--no-config", "-c", script, env={"HOME": "/tmp", "PATH": "/usr/bin:/bin"})
            lines = [line for line in found.split("\n") if line]
            for name in names:
                self.assertTrue(any(name in line.split() for line in lines), f"{command} {name}")


class Zsh(unittest.TestCase):
    def test_every_option_is_a_specification(self):
        # _arguments runs only inside the line editor: a stand-in prints what it is given.
        for command in commands():
            script = f"""
                compdef() {{ : }}
                source {MANUAL}/_tessora
                _arguments() {{ print -rl -- "$@" }}
                words=(tessora {command} ''); CURRENT=3; _tessora"""
            given = output("zsh", "-f", "-c", script).splitlines()
            for name, short in options(command):
                self.assertTrue(any(re.match(re.escape(name) + r"=?\[", line) for line in given), f"{command} {name}")
                if short and name != "--help":
                    self.assertTrue(any(line.startswith(short + "[") for line in given), f"{command} {short}")


if __name__ == "__main__":
    unittest.main()
