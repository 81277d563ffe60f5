"""What a program's --help offers stands in its manual page and in its completions, and nothing else does.

Every page of packaging/man that is about a program is held against it."""

import re
import subprocess
import sys
import unittest
from pathlib import Path

BUILD = Path(sys.argv.pop())
PACKAGING = Path(__file__).resolve().parents[2] / "packaging"
PROGRAMS = [page.name.split(".")[0] for page in sorted(PACKAGING.glob("man/*.[18].scd"))]
OPTION = r"--[a-z][a-z-]*"


def output(*command):
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=True).stdout


def offered(program):
    """The options of --help, and the commands that its usage shows."""
    text = output(BUILD / program, "--help")
    return set(re.findall(rf"(?<![\w-]){OPTION}", text)) | {"--help"}, \
        set(re.findall(rf"^  {program} ([a-z]+)", text, re.MULTILINE))


def section(program, name):
    page = next(PACKAGING.glob(f"man/{program}.[18].scd")).read_text()
    found = re.search(rf"^# {name}\n(.*?)(?=^# )", page, re.MULTILINE | re.DOTALL)
    return found.group(1) if found else ""


def page_terms(program, name):
    """What stands in bold at the beginning of the paragraphs of a section."""
    lines = re.findall(r"^\*.*$", section(program, name), re.MULTILINE)
    return {term for line in lines for term in re.findall(r"\*([a-z-]+)\*", line) if not re.fullmatch("-[a-z]", term)}


def bash_words(program, *typed):
    """What bash offers after the words `typed`."""
    script = """source "$1"; shift
        rule=$(complete -p "$1")
        COMP_WORDS=("$@" ""); COMP_CWORD=$#
        if [[ $rule =~ -F\\ ([^ ]+) ]]; then "${BASH_REMATCH[1]}"
        else [[ $rule =~ -W\\ \\'([^\\']+)\\' ]]; COMPREPLY=(${BASH_REMATCH[1]}); fi
        printf '%s\\n' "${COMPREPLY[@]}" """
    return set(output("bash", "-c", script, "bash", PACKAGING / "completions/bash" / program, program, *typed).split())


class OptionsTest(unittest.TestCase):
    def test_page(self):
        for program in PROGRAMS:
            with self.subTest(program=program):
                options, commands = offered(program)
                self.assertEqual(page_terms(program, "OPTIONS"), options)
                self.assertEqual(page_terms(program, "COMMANDS"), commands)

    def test_bash(self):
        for program in PROGRAMS:
            with self.subTest(program=program):
                options, commands = offered(program)
                words = bash_words(program).union(*(bash_words(program, command) for command in commands))
                self.assertEqual(words, options | commands)

    def test_zsh(self):
        for program in PROGRAMS:
            with self.subTest(program=program):
                options, commands = offered(program)
                file = PACKAGING / "completions/zsh" / f"_{program}"
                output("zsh", "-n", file)
                self.assertEqual(set(re.findall(rf"(?<![\w-]){OPTION}(?=[\[}}])", file.read_text())), options)
                self.assertEqual(set(re.findall(r"[( ]([a-z]+)\\:", file.read_text())), commands)

    def test_fish(self):
        for program in PROGRAMS:
            with self.subTest(program=program):
                options, commands = offered(program)
                text = (PACKAGING / "completions/fish" / f"{program}.fish").read_text()
                self.assertEqual({f"--{name}" for name in re.findall(r" -l ([a-z-]+)", text)}, options)
                self.assertEqual(set(re.findall(r"__fish_use_subcommand -a ([a-z]+)", text)), commands)


if __name__ == "__main__":
    unittest.main(verbosity=2)
