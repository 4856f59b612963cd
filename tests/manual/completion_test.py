#!/usr/bin/env python3
"""What bash, zsh and fish complete behind bgp-rehearse, typed into each in a pseudo terminal.

A command of that name stands in for the real one and leaves its arguments; the files of completion are the real one's
(BGP_REHEARSE, else build/release). One shell alone: completion_test.py Zsh."""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time
import unittest
from typing import List

import pexpect

ROOT = pathlib.Path(__file__).resolve().parents[2]
COMMAND = os.environ.get("BGP_REHEARSE", str(ROOT / "build/release/bin/bgp-rehearse"))
PATIENCE = 30  # seconds, for what is there in one
STAND_IN = """#!/bin/sh
for argument; do printf '%s\\n' "$argument"; done >"$ARGUMENTS.new"
mv "$ARGUMENTS.new" "$ARGUMENTS"
"""


def ids_of_findings() -> List[str]:
    listed = subprocess.run([COMMAND, "findings"], text=True, capture_output=True, check=True).stdout
    return re.findall(r"(?m)^([a-z-]+) +(?:stop|review|note)", listed)


def options_of(*words: str) -> List[str]:
    text = subprocess.run([COMMAND, *words, "--help"], text=True, capture_output=True, check=True).stdout
    return re.findall(r"(?m)^  (?:-\w,)?(--[\w-]+)", text)


class Completion:
    """What every shell is to complete."""

    kind: str
    start: List[str]
    settings: List[str]
    terminal = "dumb"

    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory()
        self.addCleanup(self.scratch.cleanup)
        self.folder = pathlib.Path(self.scratch.name)
        (self.folder / "bin").mkdir()
        (self.folder / "bin/bgp-rehearse").write_text(STAND_IN)
        (self.folder / "bin/bgp-rehearse").chmod(0o755)
        subprocess.run([COMMAND, "--generate", self.kind, self.folder / "completion"], check=True)
        self.here = self.folder / "here"
        self.here.mkdir()
        for name in ("edge-1.xml", "other.db"):
            (self.here / name).touch()
        self.arguments = self.folder / "arguments"
        environment = {"PATH": f"{self.folder}/bin:/usr/bin:/bin", "HOME": str(self.folder), "TERM": self.terminal,
                       "LC_ALL": "C.UTF-8", "ARGUMENTS": str(self.arguments), "INPUTRC": "/dev/null"}
        self.shell = pexpect.spawn(self.start[0], self.start[1:], cwd=self.here, env=environment, encoding="utf-8",
                                   dimensions=(200, 200), timeout=PATIENCE)
        self.addCleanup(self.shell.close, True)
        for line in self.settings:
            self.shell.sendline(line.format(folder=self.folder / "completion"))
        self.shell.sendline("echo re''ady")
        self.shell.expect_exact("ready")

    def completed(self, typed: str) -> List[str]:
        """The arguments that the command gets when this is typed behind its name, tabulators and all."""
        self.arguments.unlink(missing_ok=True)
        self.shell.send(f"bgp-rehearse {typed}")
        self.shell.send("\r")
        end = time.monotonic() + PATIENCE
        while not self.arguments.exists():
            self.assertLess(time.monotonic(), end, f"{typed!r} runs nothing: {self.shown()}")
            time.sleep(0.02)
        return self.arguments.read_text().splitlines()

    def shown(self) -> str:
        try:
            return self.shell.read_nonblocking(1 << 16, timeout=0.2)
        except pexpect.TIMEOUT:
            return ""

    def offered(self, typed: str, words: List[str]) -> str:
        """What the shell shows when this is typed and all of the words are among it."""
        self.shown()
        self.shell.send(f"bgp-rehearse {typed}\t\t")
        text = ""
        end = time.monotonic() + PATIENCE
        missing = words
        while missing and time.monotonic() < end:
            text += re.sub(r"\x1b(\[[0-9;?]*[A-Za-z]|\(B)", "", self.shown())
            missing = [word for word in words if not re.search(rf"(?<![\w-]){re.escape(word)}(?![\w-])", text)]
        self.assertEqual(missing, [], text)
        self.shell.send("\x03")  # ends the line
        return text + self.shown()

    def test_commands_and_verbs(self):
        self.assertEqual(self.completed("ru\t"), ["run"])
        self.assertEqual(self.completed("fleet sho\t"), ["fleet", "show"])
        self.assertEqual(self.completed("fle\tpl\t"), ["fleet", "plan"])
        self.offered("", ["run", "generate", "sweep", "findings", "fleet"])
        self.assertNotIn("sweep", self.offered("fleet ", ["plan", "work", "merge", "run", "report", "show"]))

    def test_options(self):
        self.assertEqual(self.completed("run --commit\t"), ["run", "--commit-check"])
        self.assertEqual(self.completed("fleet show --basel\t"), ["fleet", "show", "--baseline"])
        self.assertEqual(self.completed("run a.xml --agai\t"), ["run", "a.xml", "--again"])
        self.assertEqual(self.completed("--vers\t"), ["--version"])
        for words in (("run",), ("generate",), ("sweep",), ("fleet", "run"), ("fleet", "show")):
            options = options_of(*words)
            self.assertIn("--config", options)
            self.offered(" ".join((*words, "--")), options)

    def test_words_that_a_value_may_be(self):
        self.assertEqual(self.completed("run --color alw\t"), ["run", "--color", "always"])
        self.assertEqual(self.completed("run --color=alw\t"), ["run", "--color=always"])
        self.assertEqual(self.completed("run a.xml --fail-on rev\t--agai\t"),
                         ["run", "a.xml", "--fail-on", "review", "--again"])
        self.assertEqual(self.completed("generate --role route\t"), ["generate", "--role", "route-reflector"])
        self.assertEqual(self.completed("generate --flaw dead\t"), ["generate", "--flaw", "dead-join"])
        self.assertEqual(self.completed("fleet show fleet.db --verdict SA\t"),
                         ["fleet", "show", "fleet.db", "--verdict", "SAFE"])
        self.assertEqual(self.completed("fleet show --outcome could\t"),
                         ["fleet", "show", "--outcome", "could not run"])

    def test_ids_of_findings(self):
        ids = ids_of_findings()
        self.assertGreater(len(ids), 10)
        self.assertEqual(self.completed("findings index\t"), ["findings", "index-changed"])
        self.assertEqual(self.completed("fleet show --finding row-los\t"), ["fleet", "show", "--finding", "row-lost"])
        self.assertEqual(self.completed("fleet show --finding=row-los\t"), ["fleet", "show", "--finding=row-lost"])
        self.assertEqual(self.completed("run --severity row-lost=st\t"), ["run", "--severity", "row-lost=stop"])
        self.assertEqual(self.completed("run --severity=row-lost=st\t"), ["run", "--severity=row-lost=stop"])
        self.assertEqual(self.completed("fleet plan --severity index\tno\t"),
                         ["fleet", "plan", "--severity", "index-changed=note"])
        self.offered("run --severity ", ids)
        self.offered("findings ", ids)

    def test_files_where_files_go(self):
        self.assertEqual(self.completed("run ed\t"), ["run", "edge-1.xml"])
        self.assertEqual(self.completed("sweep edge-1.xml oth\t"), ["sweep", "edge-1.xml", "other.db"])
        self.assertEqual(self.completed("run -o ed\t"), ["run", "-o", "edge-1.xml"])
        self.assertEqual(self.completed("run --html ed\t"), ["run", "--html", "edge-1.xml"])
        self.assertEqual(self.completed("run --html=ed\t"), ["run", "--html=edge-1.xml"])
        self.assertEqual(self.completed("fleet report oth\t"), ["fleet", "report", "other.db"])
        self.assertEqual(self.completed("fleet show --baseline oth\t"), ["fleet", "show", "--baseline", "other.db"])

    def test_no_files_where_none_go(self):
        for typed in ("run --user-profile ed", "generate ed", "run --color ed", "findings ed", "ed", "fleet ed"):
            self.assertEqual(self.completed(typed + "\t"), typed.split())


class Bash(Completion, unittest.TestCase):
    kind = "complete-bash"
    start = ["bash", "--noprofile", "--norc", "-i"]
    settings = ["bind 'set enable-bracketed-paste off' 'set bell-style none' 'set page-completions off'",
                "bind 'set completion-query-items 0'", "source {folder}/bgp-rehearse"]


class BashThatKeepsWordsWhole(Bash):
    settings = [*Bash.settings, "COMP_WORDBREAKS=${{COMP_WORDBREAKS//=}}"]


class Zsh(Completion, unittest.TestCase):
    kind = "complete-zsh"
    start = ["zsh", "-f", "-i"]
    settings = ["unset zle_bracketed_paste", "unsetopt beep", "fpath=({folder} $fpath)",
                "autoload -U compinit; compinit -u -D"]


class Fish(Completion, unittest.TestCase):
    kind = "complete-fish"
    start = ["fish", "--no-config", "-i"]
    terminal = "xterm"  # on a dumb one it lists nothing
    settings = ["set -g fish_autosuggestion_enabled 0", "source {folder}/bgp-rehearse.fish"]


if __name__ == "__main__":
    sys.exit(unittest.main())
