#!/usr/bin/env python3
"""Makes manual pages of programs out of what they say with --help.

    tools/manual-pages.py FOLDER-WITH-PROGRAMS FOLDER-FOR-PAGES

So each option is told in one place. What --help has no room for stands here: a line that says what
the program is, and pages to read on.
"""

import os
import re
import subprocess
import sys
import time

PROGRAMS = {
    "wavo": ("live signal scope for machine tools", ["wavo_record", "wavo_report", "demo_master"]),
    "wavo_record": ("record what the axes of a machine do", ["wavo", "wavo_report"]),
    "wavo_report": ("circle and axis tests out of recorded values", ["wavo", "wavo_record"]),
    "demo_master": ("play recordings and motions to signal scopes", ["wavo", "wavo_pipe"]),
    "wavo_pipe": ("publish lines of numbers to signal scopes", ["wavo", "demo_master"]),
    "wavo_linuxcnc": ("publish values of a LinuxCNC controller to signal scopes", ["wavo"]),
}


def escaped(text):
    """Text as the formatter takes it: nothing of it is a command."""
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("`", "\\(ga")
    return "\\&" + text if text.startswith(".") else text


OPTION = re.compile(r"^  (--?\S.*?|[a-z]\S*)(?:  +(.*))?$")


class Page:
    """The body of a page, out of the lines of a help text."""

    def __init__(self):
        self.out = []
        self.in_option = False

    def heading(self, text):
        self.out.append(f'.SS "{escaped(text)}"')
        self.in_option = False

    def option(self, name, text):
        self.out += [".TP", f"\\fB{escaped(name)}\\fR"]
        self.in_option = True
        if text:
            self.out.append(escaped(text.strip()))

    def example(self, text):
        self.out += [".PP", ".nf", escaped(text), ".fi"]

    def text(self, line):
        if self.in_option:
            self.out.append(".PP")
            self.in_option = False
        self.out.append(escaped(line.strip()))

    def space(self):
        if self.out and self.out[-1] != ".PP" and not self.in_option:
            self.out.append(".PP")


def body(lines):
    """What stands behind the usage of a help text."""
    page = Page()
    for at, line in enumerate(lines):
        following = lines[at + 1] if at + 1 < len(lines) else ""
        option = OPTION.match(line)
        if not line.strip():
            page.space()
        elif re.match(r"^[A-Z][^.]*:?$", line) and following.startswith("  "):
            page.heading(line.rstrip(":"))
        elif option and (option.group(1).startswith("-") or option.group(2)):
            page.option(option.group(1), option.group(2))
        elif page.in_option and line.startswith(" " * 10):
            page.out.append(escaped(line.strip()))
        elif line.startswith("  ") and len(line) < 75 and not line.strip().endswith((".", ",")) and (
            line.strip().startswith(("wavo", "demo"))
        ):
            page.example(line.strip())
        else:
            page.text(line)
    while page.out and page.out[-1] == ".PP":
        page.out.pop()
    return [line for at, line in enumerate(page.out)
            if not (line == ".PP" and page.out[at + 1][:3] in (".SS", ".PP", ".TP"))]


def manual_page(program, path):
    what, others = PROGRAMS[program]
    said = subprocess.run([path, "--help"], check=True, capture_output=True, text=True).stdout
    version = subprocess.run([path, "--version"], check=True, capture_output=True, text=True).stdout
    paragraphs = said.split("\n\n", 1)
    usage = []
    rest = said
    if paragraphs[0].startswith("Usage:"):
        usage = [re.sub(r"^Usage:", "", line).strip() for line in paragraphs[0].splitlines()]
        usage = [line for line in usage if program in line]
        rest = "\n".join(paragraphs[0].splitlines()[len(usage):]) + "\n\n" + paragraphs[1]
    date = time.strftime("%Y-%m-%d", time.gmtime(int(os.environ.get("SOURCE_DATE_EPOCH", time.time()))))
    page = [f'.TH {program.upper()} 1 {date} "{escaped(version.strip())}" "User Commands"',
            ".SH NAME", f"{program} \\- {escaped(what)}"]
    page.append(".SH SYNOPSIS")
    page.append("\n.br\n".join(escaped(line) for line in usage or [f"{program} COMMAND FILE [OPTION]..."]))
    page += [".SH DESCRIPTION"] + body(rest.strip("\n").splitlines())
    page += [".SH SEE ALSO", ",\n".join(f".BR {other} (1)" for other in others)]
    return re.sub(r"\(1\),", "(1),", "\n".join(page)) + "\n"


def main():
    programs, pages = sys.argv[1:]
    os.makedirs(pages, exist_ok=True)
    for program in sorted(os.listdir(programs)):
        with open(os.path.join(pages, program + ".1"), "w", encoding="utf-8") as out:
            out.write(manual_page(program, os.path.join(programs, program)))


if __name__ == "__main__":
    main()
