#!/usr/bin/env python3
"""Makes the archive that the Windows programs are linked again from, with another Qt inside:

    relink-archive.py BUILD-FOLDER QT-FOLDER ARCHIVE.zip

Of a build with the static Qt in QT-FOLDER it takes each program's objects and the libraries that
are not Qt's and not the compiler's, and the commands that linked them, and adds what
tools/windows/relink has and what builds such a Qt.
"""
import os
import pathlib
import shlex
import shutil
import subprocess
import sys
import tempfile

TOOLS = pathlib.Path(__file__).resolve().parent
DOCUMENTS = TOOLS.parent.parent / "docs"
PROGRAMS = ["wavo", "wavo_record", "wavo_report", "demo_master", "wavo_pipe"]
BUILDS_QT = ["debian-source.sh", "mingw.cmake", "provide-qt.sh"]


def link_words(build, program):
    """The words of the command that links a program, behind the compiler's name."""
    targets = subprocess.run(["ninja", "-C", build, "-t", "query", f"{program}.exe"], check=True,
                             capture_output=True, text=True).stdout
    path = next(line.strip() for line in targets.splitlines()
                if line.strip().endswith(f"/{program}.exe"))
    commands = subprocess.run(["ninja", "-C", build, "-t", "commands", "-s", path], check=True,
                              capture_output=True, text=True).stdout
    words = shlex.split(commands.splitlines()[-1])
    first = words.index("&&") + 2
    return words[first:words.index("&&", first)]


class Archive:
    def __init__(self, folder, build, qt):
        self._folder = folder
        self._build = build
        self._qt = qt

    def put(self, source, place):
        target = self._folder / place
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(source, target)

    def word(self, word):
        """A word of a command as the archive has it; a file that it names is put there."""
        if word.startswith("-"):
            return word
        path = os.path.normpath(self._build / word)
        if path.startswith(f"{self._qt}/"):
            return "@QT@" + path[len(str(self._qt)):]
        inside = path.startswith(f"{self._build}/")
        place = os.path.join("objects", os.path.relpath(path, self._build)) if inside else \
            os.path.join("libraries", os.path.basename(path))
        self.put(path, place)
        return place

    def put_program(self, program):
        words = []
        rest = iter(link_words(self._build, program))
        for word in rest:
            if word == "-o":
                words += ["-o", f"@OUT@/{os.path.basename(next(rest))}"]
            elif not word.startswith("-Wl,--out-implib"):
                words.append(self.word(word))
        commands = self._folder / "commands"
        commands.mkdir(exist_ok=True)
        (commands / f"{program}.txt").write_text("".join(f'"{word}"\n' for word in words))


def main():
    build, qt, target = (pathlib.Path(os.path.realpath(name)) for name in sys.argv[1:])
    with tempfile.TemporaryDirectory() as work:
        folder = pathlib.Path(work) / target.stem
        archive = Archive(folder, build, qt)
        for program in PROGRAMS:
            archive.put_program(program)
        for source in (TOOLS / "relink").iterdir():
            archive.put(source, source.name)
        for name in BUILDS_QT:
            archive.put(TOOLS / name, f"tools/windows/{name}")
        archive.put(DOCUMENTS / "third-party.md", "third-party.md")
        shutil.make_archive(target.with_suffix(""), "zip", work, folder.name)


main()
