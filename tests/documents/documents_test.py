#!/usr/bin/env python3
"""Holds the documents to the tree: the commands they show, the links and the tables of folders.

A command that a page shows, in a block or in the text, is run in a scratch folder that has the tree's files and this build.
What a block shows after `$ command` must be what the command prints; `…` stands for what is left out. Commands that
build, install or take long are listed in NOT_RUN: of them only what they name is looked up."""

import fnmatch
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
os.environ["XDG_CONFIG_HOME"] = "/nonexistent"  # no bgp-rehearse.toml of one's own counts
BUILD = pathlib.Path(os.environ.get("BGP_BUILD_DIR", ROOT / "build/release"))
PAGES = sorted(path for pattern in ("*.md", "docs/*.md", "docs/manual/*.md", "*/README.md") for path in ROOT.glob(pattern))

# Programs of the tree that are not run here, and why.
NOT_RUN = {
    "./check": "runs this very test",
    "./demo": "builds; a stage of ./check --all",
    "bench/fleet": "takes long",
    "bench/run": "takes long",
    "tests/browser/run": "needs a browser; a stage of ./check --all",
    "tools/dev/check-binaries": "builds; a stage of ./check --all",
    "tools/dev/check-packages": "builds, and installs; a stage of ./check --all",
    "tools/dev/coverage": "builds, and takes long",
    "tools/dev/fresh-machine": "runs a whole system",
    "tools/dev/memcheck": "a stage of ./check --all",
    "tools/dev/pack-corpus": "changes the tree, after a long run",
    "tools/dev/planted-bugs": "takes long",
    "tools/dev/planted-bugs-in-a-fleet": "takes long",
    "tools/dev/renew-upgrades": "changes the tree",
    "tools/dev/sweep": "a stage of ./check --all",
    "tools/fleet/parallel": "needs hosts; tests/fleet/parallel_test.py runs it",
    "tools/fleet/slurm": "needs a cluster; tests/fleet/slurm_test.py runs it",
    "bin/fuzz_xml_loader": "runs for an hour",
}


class Command:
    """One command of a page, with the lines that the page shows after it."""

    def __init__(self, page, number, text):
        self.place = f"{page.relative_to(ROOT)}:{number}"
        self.words = shlex.split(text, comments=True)
        self.shown = []


def blocks(text):
    """The lines of each block that is fenced, or set in by four blanks, with their numbers."""
    fenced, block = False, []
    for number, line in enumerate(text.splitlines() + [""], start=1):
        if line.startswith("```"):
            fenced = not fenced
        elif fenced or re.match(r"    [a-z./]+ ", line):
            block.append((number, line.strip() if not fenced else line))
            continue
        if block:
            yield block
        block = []


def is_command(text):
    of_tree = r"\./(check|demo)|(tools/dev|tools/fleet|tests/browser|bench)/[a-z-]+|(build/[a-z]+/)?bin/\w[\w-]*"
    return re.match(rf"({of_tree}|cmake|ctest)( |$)", text)


def commands_of_blocks(page):
    text = page.read_text().replace("\\\n", "  ")
    for block in blocks(text):
        shows = any(line.startswith("$ ") for _, line in block)
        if not shows and not any(is_command(line) for _, line in block):
            continue  # a drawing
        command = None
        for number, line in block:
            if shows and not line.startswith("$ "):
                command.shown.append(line)
                continue
            for part in line.removeprefix("$ ").split(" && "):
                command = Command(page, number, part)
                yield command


def commands_of_text(page):
    for number, line in enumerate(page.read_text().splitlines(), start=1):
        for text in re.findall(r"`([^`]+)`", line):
            if is_command(text):
                yield Command(page, number, text)


def commands():
    return [command for page in PAGES for command in (*commands_of_blocks(page), *commands_of_text(page)) if command.words]


def presets(kind):
    return {preset["name"] for preset in json.loads((ROOT / "CMakePresets.json").read_text())[kind]}


class Scratch:
    """A folder with the tree's files and this build under the names that pages give it."""

    def __init__(self):
        self.folder = tempfile.TemporaryDirectory()
        self.path = pathlib.Path(self.folder.name)
        for entry in ROOT.iterdir():
            if entry.name not in ("build", ".git"):
                (self.path / entry.name).symlink_to(entry)
        (self.path / "build").mkdir()
        for preset in presets("configurePresets"):
            (self.path / "build" / preset).symlink_to(BUILD)

    def run(self, words):
        return subprocess.run(words, cwd=self.path, text=True, capture_output=True, check=False)


def same(shown, printed):
    """Whether the lines are those shown; a line `…` is any number of lines, and `…` in a line any text."""
    if not shown:
        return not printed
    if shown[0].strip() == "…":
        return any(same(shown[1:], printed[count:]) for count in range(len(printed) + 1))
    pattern = ".*".join(map(re.escape, re.split("…", shown[0].rstrip())))
    return bool(printed) and re.fullmatch(pattern, printed[0].rstrip()) is not None and same(shown[1:], printed[1:])


class Documents(unittest.TestCase):
    maxDiff = None

    def test_commands(self):
        scratch = Scratch()
        self.addCleanup(scratch.folder.cleanup)
        unused = set(NOT_RUN)
        for command in commands():
            with self.subTest(f"{command.place}: {shlex.join(command.words)}"):
                program = command.words[0]
                unused.discard(program)
                if program in NOT_RUN:
                    self.look_up(command)
                elif program in ("cmake", "ctest"):
                    getattr(self, f"look_up_{program}")(command.words)
                else:
                    self.run_command(scratch, command)
        self.assertEqual(unused, set(), "no page shows these: leave them out of NOT_RUN")

    def run_command(self, scratch, command):
        words = list(command.words)
        if "--pairs" in words:
            words += ["--every", "500"]  # a sample; the whole takes long
        if words[0].endswith("/bin/bgp-rehearse") or words[0].endswith("_test"):
            done = scratch.run(words)
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
            self.assertNotRegex(done.stdout, r"(?m)^\[==========\] 0 tests")
        else:
            self.fail("this test does not know how to run it: let it, or tell in NOT_RUN why not")
        if command.shown:
            shown = [line.replace("build/release/", f"{BUILD.parent.name}/{BUILD.name}/") for line in command.shown]
            self.assertTrue(same(shown, done.stdout.splitlines()), f"it prints\n{done.stdout}")

    def look_up(self, command):
        program, *arguments = command.words[:command.words.index("--")] if "--" in command.words else command.words
        if program.startswith("bin/fuzz_"):
            self.assertTrue((ROOT / "fuzz" / f"{program.removeprefix('bin/fuzz_')}.cpp").is_file())
            return
        self.assertTrue(os.access(ROOT / program, os.X_OK), f"{program} is not there, or not executable")
        known = (ROOT / program).read_text()
        if program == "tools/dev/sweep":
            known += subprocess.run([BUILD / "bin/bgp-rehearse", "sweep", "--help"], text=True, check=True,
                                    capture_output=True).stdout
        if program == "bench/run":
            known += (ROOT / "bench/measure.py").read_text()
        if program == "bench/fleet":
            known += (ROOT / "bench/fleet.py").read_text()
        if program.startswith("tools/dev/planted-bugs"):
            known += (ROOT / "contract/planted_bugs.txt").read_text()
            for name in arguments:
                self.assertIn(f"bug: {name}\n", known)
        for option in re.findall(r"--[a-z-]+", " ".join(arguments)):
            self.assertIn(option, known, f"{program} knows no {option}")

    def look_up_cmake(self, words):
        options = (ROOT / "CMakeLists.txt").read_text()
        for name in re.findall(r"-D(BGP_\w+)", " ".join(words)):
            self.assertRegex(options, rf"(set|option)\({name} ")
        if "--preset" in words:
            kind = "buildPresets" if "--build" in words else "configurePresets"
            self.assertIn(words[words.index("--preset") + 1], presets(kind))

    def look_up_ctest(self, words):
        self.assertIn(words[words.index("--preset") + 1], presets("testPresets"))
        if "-R" not in words:
            return
        pattern = words[words.index("-R") + 1]
        names = [f"fuzz_{source.stem}" for source in ROOT.glob("fuzz/*.cpp")]
        listed = subprocess.run(["ctest", "--test-dir", BUILD, "-N"], text=True, capture_output=True, check=True).stdout
        names += re.findall(r"Test +#\d+: (\S+)", listed)
        self.assertTrue(any(re.search(pattern, name) for name in names), f"no test's name has {pattern}")

    def test_check_tells_its_arguments(self):
        told = subprocess.run([ROOT / "check", "--help"], text=True, capture_output=True, check=True).stdout
        self.assertIn("--all", told)
        for wrong in (["--everything"], ["--all", "--all"], ["release"]):
            refused = subprocess.run([ROOT / "check", *wrong], text=True, capture_output=True, check=False)
            self.assertEqual((refused.returncode, refused.stderr), (2, told))

    def test_links(self):
        for page in PAGES:
            for target, anchor in re.findall(r"\]\(([^)#:]*)(#[^)]*)?\)", page.read_text()):
                with self.subTest(f"{page.relative_to(ROOT)}: {target}{anchor}"):
                    linked = (page.parent / target).resolve() if target else page
                    self.assertTrue(linked.exists())
                    if anchor:
                        titles = re.findall(r"(?m)^#+ (.*)$", linked.read_text())
                        slugs = [re.sub(r"[^\w -]", "", title).lower().replace(" ", "-") for title in titles]
                        self.assertIn(anchor[1:], slugs)

    def test_tables_of_folders(self):
        tracked = subprocess.run(["git", "ls-files"], cwd=ROOT, text=True, capture_output=True, check=True).stdout.split()
        self.expect_folders("README.md", {path.split("/")[0] for path in tracked if "/" in path and path[0] != "."}, "")
        self.expect_folders("docs/testing.md", {path.split("/")[1] for path in tracked if path.count("/") > 1 and
                                                path.startswith("tests/")}, "tests/")

    def expect_folders(self, page, folders, above):
        """Each folder stands in the page's table, and each folder of the table is there."""
        rows = re.findall(r"(?m)^\| (`[^|]*/`[^|]*) \|", (ROOT / page).read_text())
        told = [name for row in rows for name in re.findall(r"`([^`]+/)`", row)]
        for folder in told:
            self.assertTrue((ROOT / folder).is_dir(), f"{page}: {folder} is not there")
        for folder in sorted(folders):
            self.assertTrue(any(fnmatch.fnmatch(name, f"{above}{folder}/*") for name in told),
                            f"{page} does not tell what {above}{folder}/ is")


if __name__ == "__main__":
    sys.exit(unittest.main())
