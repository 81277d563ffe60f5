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


def options_in(text):
    return set(re.findall(rf"(?<![\w-]){OPTION}", text))


def offered(program):
    """The program's own options in --help; its commands, each with what it takes: its options, and words such as `on|off`."""
    text = output(BUILD / program, "--help")
    commands = {name: options_in(rest) for name, rest in re.findall(rf"^  {program} ([a-z]+)(.*)", text, re.MULTILINE)}
    for name in re.findall(r"^  ([a-z]+) ", text.partition("\nCommands:\n")[2], re.MULTILINE):
        usage, _, rest = output(BUILD / program, name, "--help").partition("\n\n")
        commands[name] = options_in(rest) - {"--help"} | {word for pair in re.findall(r"([a-z]+)\|([a-z]+)$", usage) for word in pair}
    return (options_in(text) | {"--help"}).difference(*commands.values()), commands


def everything(program):
    options, commands = offered(program)
    return options.union(commands, *commands.values())


def of_options(words):
    return {word for word in words if word.startswith("--")}


def section(program, name):
    page = next(PACKAGING.glob(f"man/{program}.[18].scd")).read_text()
    found = re.search(rf"^# {name}\n(.*?)(?=^# )", page, re.MULTILINE | re.DOTALL)
    return found.group(1) if found else ""


def page_terms(program, name):
    """What stands in bold at the beginning of the paragraphs of a section, a list for each."""
    lines = re.findall(r"^\*.*$", section(program, name), re.MULTILINE)
    return [[term for term in re.findall(r"\*([a-z-]+)\*", line) if not re.fullmatch("-[a-z]", term)] for line in lines]


def bash_words(program, *typed):
    """What bash offers after the words `typed`."""
    script = """source "$1"; shift
        rule=$(complete -p "$1")
        COMP_WORDS=("$@" ""); COMP_CWORD=$#
        if [[ $rule =~ -F\\ ([^ ]+) ]]; then "${BASH_REMATCH[1]}"
        else [[ $rule =~ -W\\ \\'([^\\']+)\\' ]]; COMPREPLY=(${BASH_REMATCH[1]}); fi
        printf '%s\\n' "${COMPREPLY[@]}" """
    return set(output("bash", "-c", script, "bash", PACKAGING / "completions/bash" / program, program, *typed).split())


def of_each_program(test):
    def tests(self):
        for program in PROGRAMS:
            with self.subTest(program=program):
                test(self, program, *offered(program))
    return tests


class OptionsTest(unittest.TestCase):
    @of_each_program
    def test_page(self, program, _, commands):
        described = {name: set(options) for name, *options in page_terms(program, "COMMANDS")}
        options = {term for terms in page_terms(program, "OPTIONS") for term in terms}
        self.assertEqual(options.union(*described.values()), of_options(everything(program)))
        self.assertEqual(set(described), set(commands))
        for name, beside in described.items():
            self.assertIn(beside, (set(), of_options(commands[name])), name)

    @of_each_program
    def test_bash(self, program, options, commands):
        words = bash_words(program)
        self.assertLessEqual(set(commands), words)
        for command, taken in commands.items():
            after = bash_words(program, command)
            self.assertEqual(after - options, taken, command)
            words |= after
        self.assertEqual(words, everything(program))

    @of_each_program
    def test_zsh(self, program, _, commands):
        file = PACKAGING / "completions/zsh" / f"_{program}"
        output("zsh", "-n", file)
        text = file.read_text()
        words = rf"(?<![\w-]){OPTION}(?=[\[}}])"
        self.assertEqual(set(re.findall(words, text)), of_options(everything(program)))
        self.assertEqual(set(re.findall(r"[( ]([a-z]+)\\:", text)), set(commands))
        for command, part in re.findall(r"^  ([a-z]+)\)(.*?);;", text, re.MULTILINE | re.DOTALL):
            values = {word for pair in re.findall(r"\(([a-z]+) ([a-z]+)\)", part) for word in pair}
            self.assertEqual(set(re.findall(words, part)) | values, commands[command], command)

    @of_each_program
    def test_fish(self, program, options, commands):
        text = (PACKAGING / "completions/fish" / f"{program}.fish").read_text()
        found = {"": set()}
        for command, rest in re.findall(r"^complete -c \S+(?: -n \"__fish_seen_subcommand_from ([a-z]+)\")?(.*)", text,
                                        re.MULTILINE):
            words = {f"--{name}" for name in re.findall(r" -l ([a-z-]+)", rest)}
            if command:
                words |= {word for pair in re.findall(r" -a \"([a-z]+) ([a-z]+)\"", rest) for word in pair}
            found.setdefault(command, set()).update(words)
        self.assertEqual(found, {"": options, **{name: taken for name, taken in commands.items() if taken}})
        self.assertEqual(set(re.findall(r"__fish_use_subcommand -a ([a-z]+)", text)), set(commands))


if __name__ == "__main__":
    unittest.main(verbosity=2)
