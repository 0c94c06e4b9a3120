"""Runs the commands that pages show, and compares what they write.

    commands.py TOP EXAMPLES TOOL PAGE...

A code block marked `console` is run line by line: "$ command" by a shell, "> more" continues it, "zmfb> line" is typed
into the `zmfb shell` that the terminal is running. The lines below are what it wrote (output.py tells how they are
compared). Blocks of a page go on where the last one stopped; `console desk` is the terminal "desk". A page begins in an
empty folder, with `zmfbconn` in it, the sources, and `build`, the examples. A comment <!-- varies: 4242 desk --> names words that differ from run
to run. A block marked `screen` is one command on a terminal; what stands behind a question, "[y/N] y", is typed there.
No other block of these pages may have a command of zmfb.

With ZMFB_DOCS_SERVER=HOST/PORT in the environment the database of a page, which is called shop.fdb, lies on that server,
and ISC_USER and ISC_PASSWORD are those of its owner; server:/data is a folder on it.
"""

import os
import re
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import output
from pages import Page
from terminal import Terminal, environment, memory_folder, on_screen

SHELL_PROMPT = "zmfb> "
VARIES = re.compile(r"<!-- varies: (.*?) -->")
DATABASE = "shop.fdb"
FOLDER_OF_SERVER = "server:/data"
COMMAND_OF_TOOL = re.compile(r"^(\$ )?zmfb( |$)")


class Step:
    """One command with what the page shows of its output."""

    def __init__(self, terminal, line, prompt, command):
        self.terminal, self.line, self.prompt, self.command = terminal, line, prompt, command
        self.shown = []


def steps_of(block):
    steps = []
    terminal = block.words[1] if len(block.words) > 1 else ""
    for number, line in enumerate(block.lines, block.line):
        if line.startswith("$ "):
            steps.append(Step(terminal, number, "$ ", line[2:]))
        elif line.startswith(SHELL_PROMPT) or line == SHELL_PROMPT.strip():
            steps.append(Step(terminal, number, SHELL_PROMPT, line[len(SHELL_PROMPT):]))
        elif not steps:
            raise ValueError(f"line {number}: a block begins with a command")
        elif line.startswith("> ") and not steps[-1].shown:
            steps[-1].command += "\n" + line[2:]
        else:
            steps[-1].shown.append(line)
    for step in steps:
        while step.shown and not step.shown[-1]:
            step.shown.pop()
    return steps


class Walk:
    """The commands of one page, run in a folder of their own."""

    def __init__(self, page, top, examples, tool):
        self.page, self.problems, self.count, self.bound = page, [], 0, {}
        self.varying = [word for _, line in page.prose for found in VARIES.findall(line) for word in found.split()]
        self.links = {"zmfbconn": top, "build": examples, "bin/zmfb": tool}
        self.terminals, self.in_shell = {}, set()

    def problem(self, line, text):
        self.problems.append(f"{self.page.path.name}:{line}: {text}")

    def run(self):
        with tempfile.TemporaryDirectory(prefix="zmfb-docs-", dir=memory_folder()) as folder:
            self.home = Path(folder) / "home"
            (self.home / "bin").mkdir(parents=True)
            for name, target in self.links.items():
                (self.home / name).symlink_to(Path(target).resolve())
            if server := os.environ.get("ZMFB_DOCS_SERVER"):
                self.bound = {DATABASE: f"{server}:{self.home / DATABASE}", FOLDER_OF_SERVER: f"{server}:{self.home}"}
                self.varying += self.bound
            try:
                for block in self.page.blocks:
                    self.block(block)
            finally:
                for terminal in self.terminals.values():
                    terminal.close()
        return self.problems

    def block(self, block):
        if block.words[:1] == ["screen"]:
            return self.screen(steps_of(block)[0])
        if block.words[:1] != ["console"]:
            for number, line in enumerate(block.lines, block.line):
                if COMMAND_OF_TOOL.match(line):
                    self.problem(number, "a command of zmfb in a block that is not run")
            return
        for step in steps_of(block):
            self.step(step)

    def terminal(self, name):
        if name not in self.terminals:
            self.terminals[name] = Terminal(self.home, environment(self.home))
        return self.terminals[name]

    def step(self, step):
        self.count += 1
        command = step.command
        for word, value in self.bound.items():
            command = re.sub(rf"\b{re.escape(word)}\b", lambda _, value=value: value, command)
        terminal, status = self.terminal(step.terminal), 0
        if step.prompt == SHELL_PROMPT:
            if step.terminal not in self.in_shell:
                return self.problem(step.line, "no zmfb shell is running in this terminal")
            if command.strip() == ".quit":
                self.in_shell.discard(step.terminal)
                written, status = terminal.leave_shell()
            else:
                written = terminal.type(command)
        elif re.fullmatch(r"zmfb( --db \S+)? shell", command):
            self.in_shell.add(step.terminal)
            written = terminal.start_shell(command)
            return None
        else:
            written, status = terminal.run(command)
        return self.compare(step, written, status)

    def screen(self, step):
        self.count += 1
        answers = [line.partition("[y/N] ")[2] for line in step.shown if "[y/N] " in line]
        written, status = on_screen(step.command, answers, self.home, environment(self.home))
        return self.compare(step, written, status)

    def compare(self, step, written, status):
        while written and not written[-1]:
            written.pop()
        if not output.matches(step.shown, written, self.varying, self.bound):
            shown = "\n".join("  - " + line for line in step.shown)
            got = "\n".join("  + " + line for line in written)
            self.problem(step.line, f"{step.command}\n{shown}\n{got}")
        elif status != 0 and not any(re.search(r"\berror: |^raised: |^\[ERROR\]", line) for line in step.shown):
            self.problem(step.line, f"{step.command}: exit status {status}, and the page shows no error")


def main():
    top, examples, tool, *pages = sys.argv[1:]
    walks = [Walk(Page(Path(top) / name), top, examples, tool) for name in pages]
    with ThreadPoolExecutor(max_workers=2) as pool:
        problems = [problem for found in pool.map(Walk.run, walks) for problem in found]
    problems += [f"{walk.page.path.name}: no command was found" for walk in walks if walk.count == 0]
    count = sum(walk.count for walk in walks)
    for problem in problems:
        print(problem)
    print(f"{count} commands run, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
