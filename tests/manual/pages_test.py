#!/usr/bin/env python3
"""The manual pages against the command that writes them: each command has its page, each option of its help stands
there, the examples run, mandoc finds nothing to say, and the pages are the same wherever they are written.

Takes the command from BGP_REHEARSE, else from build/release."""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
os.environ["XDG_CONFIG_HOME"] = "/nonexistent"  # no bgp-rehearse.toml of one's own counts
COMMAND = pathlib.Path(os.environ.get("BGP_REHEARSE", ROOT / "build/release/bin/bgp-rehearse")).resolve()
INSTALLED_EXAMPLES = "/usr/share/doc/bgp-rehearse/examples"
SECTIONS = ["NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "ENVIRONMENT", "FILES", "EXIT STATUS", "EXAMPLES", "SEE ALSO"]


def output(*words, **environment):
    return subprocess.run(words, text=True, capture_output=True, check=True, env=os.environ | environment).stdout


def help_of(words):
    return output(COMMAND, *words, "--help")


def commands(words=()):
    """All commands as their help lists them, the whole one first."""
    listed = help_of(words).partition("\nSubcommands:\n")[2].partition("\n\n")[0]
    yield words
    for name in re.findall(r"(?m)^  (\S+)", listed):
        yield from commands((*words, name))


def name_of(words):
    return "-".join(("bgp-rehearse", *words))


class Pages(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.folder = pathlib.Path(cls.scratch.name) / "man1"
        output(COMMAND, "--generate", "man", cls.folder, SOURCE_DATE_EPOCH="1700000000")
        cls.pages = {path.stem: path for path in cls.folder.iterdir()}
        cls.commands = list(commands())

    @classmethod
    def tearDownClass(cls):
        cls.scratch.cleanup()

    def rendered(self, words):
        page = output("mandoc", "-Tascii", "-Owidth=200", self.pages[name_of(words)])
        return re.sub(".\b", "", page)

    def section(self, words, title):
        found = re.search(rf"(?ms)^{title}\n(.*?)^(?=\S)", self.rendered(words))
        self.assertIsNotNone(found, f"{name_of(words)} has no section {title}")
        return found[1]

    def test_each_command_has_its_page_and_no_other_is_there(self):
        self.assertGreater(len(self.commands), 5)
        self.assertEqual(set(self.pages), {name_of(words) for words in self.commands})
        prose = {path.stem for path in (ROOT / "docs/manual").glob("*.md")}
        self.assertEqual(prose, set(self.pages) | {"shared"})

    def test_each_option_of_help_stands_in_its_page(self):
        for words in self.commands:
            lines = re.findall(r"(?m)^  (-.*?)(?:  |$)", help_of(words))
            self.assertTrue(lines, words)
            told = re.findall(r"(?m)^     (-\S.*)$", self.section(words, "OPTIONS"))
            told = {name for line in told for name in re.findall(r"(?<![\w=|[-])-[\w-]+", line)}
            asked = {name for line in lines for name in re.findall(r"(?<![\w=|[-])-[\w-]+", line)}
            with self.subTest(name_of(words)):
                self.assertEqual(told, asked)

    def test_each_argument_and_exit_status_of_help_stands_in_its_page(self):
        for words in self.commands:
            text = help_of(words)
            with self.subTest(name_of(words)):
                for argument in re.findall(r"(?m)^  (\S+)", text.partition("\nPositionals:\n")[2].partition("\n\n")[0]):
                    self.assertRegex(self.section(words, "OPTIONS"), rf"(?m)^     {re.escape(argument)}(\s|$)")
                    self.assertIn(argument, self.section(words, "SYNOPSIS"))
                for status in re.findall(r"(?m)^  (\d+) ", text.partition("Exit status:\n")[2]):
                    self.assertRegex(self.section(words, "EXIT STATUS"), rf"(?m)^     {status} ")

    def test_sections_stand_in_their_order(self):
        for words in self.commands:
            titles = [line for line in self.rendered(words).splitlines() if line in SECTIONS]
            with self.subTest(name_of(words)):
                self.assertEqual(titles, SECTIONS)

    def test_words_of_choices_and_variables_are_told(self):
        options = self.section(("run",), "OPTIONS")
        self.assertIn("--color auto | always | never", options)
        self.assertIn("--json[=FILE]", options)
        self.assertRegex(self.section(("generate",), "OPTIONS"), r"provider-edge\n? +VRFs of customers")
        for words in ((), ("run",), ("fleet", "plan")):
            self.assertIn("BGP_REHEARSE_LIBRARY", self.section(words, "ENVIRONMENT"))
        self.assertNotIn("BGP_REHEARSE_LIBRARY", self.section(("generate",), "ENVIRONMENT"))
        self.assertIn("only with --router", self.section(("fleet", "show"), "OPTIONS"))

    def test_options_in_files_are_told_where_they_are_read(self):
        for words in self.commands:
            told = "bgp-rehearse.toml" in self.section(words, "FILES")
            self.assertEqual(told, words != ("findings",), name_of(words))

    def lint(self, *pages):
        """What mandoc says, but of pages that these refer to: it looks for them where pages are installed."""
        found = subprocess.run(["mandoc", "-Tlint", *pages], text=True, capture_output=True, check=False).stdout
        missing = re.compile(r"STYLE: referenced manual not found: Xr (\S+) 1")
        return [line for line in found.splitlines() if not ((name := missing.search(line)) and name[1] in self.pages)]

    def test_mandoc_finds_nothing_to_say(self):
        self.assertEqual(self.lint(*sorted(self.pages.values())), [])

    def test_lint_would_see_a_mistake(self):
        wrong = self.folder.parent / "wrong.1"
        wrong.write_text(self.pages["bgp-rehearse"].read_text().replace(".Sh EXAMPLES", ".Sh EXAMPLES\n.Ed"))
        self.assertRegex("".join(self.lint(wrong)), "Ed")
        wrong.write_text(self.pages["bgp-rehearse"].read_text() + ".Xr no-such-page 1\n")
        self.assertRegex("".join(self.lint(wrong)), "no-such-page")

    def test_pages_are_the_same_on_every_machine_and_day(self):
        with tempfile.TemporaryDirectory() as other:
            output("taskset", "-c", "0", COMMAND, "--generate", "man", other, SOURCE_DATE_EPOCH="1700000000",
                   TZ="Asia/Tokyo", LC_ALL="C.UTF-8", HOME="/nonexistent", COLUMNS="40")
            for name, page in self.pages.items():
                self.assertEqual((pathlib.Path(other) / page.name).read_bytes(), page.read_bytes(), name)
                self.assertIn(".Dd November 14, 2023\n", page.read_text())
            undated = {key: value for key, value in os.environ.items() if key != "SOURCE_DATE_EPOCH"}
            subprocess.run([COMMAND, "--generate", "man", other], check=True, env=undated)
            self.assertIn("\n.Dd\n", (pathlib.Path(other) / "bgp-rehearse.1").read_text())

    def examples(self, words):
        """The commands of a page's examples, as mandoc shows them: those that are set in further than the text."""
        text = self.section(words, "EXAMPLES").replace("\\\n", " ")
        return re.findall(r"(?m)^ {6,}(bgp-rehearse .*)$", text)

    def test_examples_run(self):
        for words in self.commands:
            examples = self.examples(words)
            self.assertTrue(examples, f"{name_of(words)} has no example")
            with tempfile.TemporaryDirectory() as scratch:
                for example in examples:
                    environment = os.environ | {"PATH": f"{COMMAND.parent}:{os.environ['PATH']}"}
                    here = example.replace(INSTALLED_EXAMPLES, str(ROOT / "examples"))
                    with self.subTest(f"{name_of(words)}: {example}"):
                        done = subprocess.run(["bash", "-euo", "pipefail", "-c", here], cwd=scratch, env=environment,
                                              text=True, capture_output=True, check=False)
                        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_first_example_takes_an_installed_configuration(self):
        file = re.search(rf"{INSTALLED_EXAMPLES}/(\S+)", self.examples(())[0])
        self.assertTrue((ROOT / "examples" / file[1]).is_file())

    def test_unknown_kind_and_missing_folder_are_refused(self):
        for arguments in (["mann", "there"], ["man", "/proc/none"], ["man"]):
            refused = subprocess.run([COMMAND, "--generate", *arguments], text=True, capture_output=True, check=False,
                                     cwd=self.folder.parent)
            self.assertEqual((refused.returncode, refused.stdout), (2, ""))
            self.assertIn("--generate", refused.stderr)

    def test_generate_is_for_packagers_and_not_shown(self):
        self.assertNotIn("--generate", help_of(()))


if __name__ == "__main__":
    sys.exit(unittest.main())
