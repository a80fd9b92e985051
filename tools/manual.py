#!/usr/bin/env python3
"""Makes the manual as HTML and as PDF of docs/manual.

    tools/manual.py FOLDER

FOLDER gets a page per chapter with their pictures, wavo-manual.pdf, and in go/ a page per heading that
leads to it: what a desktop is told to open often loses what stands behind "#". Chapters are those that
docs/manual/README.md links to, in that order. Anchors are made of the words of their headings, as the
web sites of repositories do, so that a link leads to the same place everywhere. Needs pandoc and
weasyprint. What does not resolve ends it with status 1.
"""

import base64
import html
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path
from urllib.parse import unquote

ROOT = Path(__file__).resolve().parent.parent
SOURCES = ROOT / "docs" / "manual"
STYLE = Path(__file__).resolve().parent / "manual.css"
PDF = "wavo-manual.pdf"

HEADING = re.compile(r'<h([1-6]) id="([^"]*)">(.*?)</h\1>', re.S)
LINK = re.compile(r'<a\s+href="([^"]*)"[^>]*>(.*?)</a>', re.S)
PICTURE = re.compile(r'<p><img\s+src="([^"]*)"\s+alt="([^"]*)"\s*/?></p>')


def plain(markup):
    return re.sub(r"<[^>]*>", "", markup)


class Chapter:
    """One page: `name` without ".html", the source, its body and its headings (level, id, text)."""

    def __init__(self, source):
        self.source = source
        self.name = "index" if source.name == "README.md" else source.stem
        self.body = subprocess.run(
            ["pandoc", "--from=gfm", "--to=html5", "--wrap=none", "--columns=10000", "--no-highlight",
             "--fail-if-warnings", str(source)],
            check=True, capture_output=True, text=True).stdout
        self.headings = [(int(level), anchor, text) for level, anchor, text in HEADING.findall(self.body)]
        self.title = self.headings[0][2]
        self.anchors = {anchor for _, anchor, _ in self.headings}
        if [level for level, _, _ in self.headings].count(1) != 1 or self.headings[0][0] != 1:
            raise SystemExit(f"{source}: a chapter has one title, and it comes first")
        texts = [plain(text) for _, _, text in self.headings]
        if len(set(texts)) != len(texts):
            raise SystemExit(f"{source}: two headings are the same, their anchors would depend on their order")


class Manual:
    def __init__(self):
        index = SOURCES / "README.md"
        self.chapters = [Chapter(index)]
        for target in re.findall(r"\]\(([^)#]+\.md)\)", index.read_text()):
            source = (SOURCES / target).resolve()
            if source not in [chapter.source for chapter in self.chapters]:
                self.chapters.append(Chapter(source))
        self.by_source = {chapter.source: chapter for chapter in self.chapters}
        self.pictures = {}  # name: source
        self.wrong = [f"{source.name} stands in no list of chapters" for source in SOURCES.glob("*.md")
                      if source not in self.by_source]

    def address(self, chapter, target):
        """(chapter, anchor) that a link of a chapter leads to; None where it leads out of the manual."""
        path, _, anchor = unquote(target).partition("#")
        source = (chapter.source.parent / path).resolve() if path else chapter.source
        found = self.by_source.get(source)
        if found is None:
            # What is for authors of programs also links to sources, which the manual does not have.
            if chapter.source.parent == SOURCES or not source.exists():
                self.wrong.append(f"{chapter.source.name}: no {target}")
            return None
        if anchor and anchor not in found.anchors:
            self.wrong.append(f"{chapter.source.name}: no heading for {target}")
        return found, anchor

    def body(self, chapter, address_of, picture_of):
        """The body with links as address_of(chapter, anchor) and pictures as picture_of(source) writes them."""
        def link(match):
            target, text = match.groups()
            if re.match(r"[a-z]+:", target):
                return match.group(0)
            found = self.address(chapter, target)
            return text if found is None else f'<a href="{address_of(*found)}">{text}</a>'

        def picture(match):
            source = (chapter.source.parent / unquote(match.group(1))).resolve()
            if not source.is_file() or self.pictures.setdefault(source.name, source) != source:
                self.wrong.append(f"{chapter.source.name}: no picture {match.group(1)}, or another of its name")
                return ""
            return (f'<figure><img src="{picture_of(source)}" alt="{match.group(2)}">'
                    f"<figcaption>{match.group(2)}</figcaption></figure>")

        return PICTURE.sub(picture, LINK.sub(link, chapter.body))

    def contents(self, address_of, chapters, depth):
        """Lists of lists of headings down to a level."""
        lines = ["<ul>"]
        for chapter in chapters:
            lines.append(f'<li><a href="{address_of(chapter, "")}">{chapter.title}</a>')
            level = 1
            for heading_level, anchor, text in chapter.headings[1:]:
                if heading_level > depth:
                    continue
                while level < heading_level:
                    lines.append("<ul>")
                    level += 1
                while level > heading_level:
                    lines.append("</ul>")
                    level -= 1
                lines.append(f'<li><a href="{address_of(chapter, anchor)}">{plain(text)}</a></li>')
            lines.append("</ul>" * (level - 1) + "</li>")
        lines.append("</ul>")
        return "\n".join(lines)

    # A page per chapter.

    def write_pages(self, folder):
        def address_of(chapter, anchor):
            return f"{chapter.name}.html" + (f"#{anchor}" if anchor else "")

        (folder / "go").mkdir(parents=True)
        for i, chapter in enumerate(self.chapters):
            body = self.body(chapter, address_of, lambda source: f"images/{source.name}")
            if i == 0:
                body += "<h2 id=\"contents\">Contents</h2>\n" + self.contents(address_of, self.chapters[1:], 3)
            around = []
            if i > 0:
                around.append(f'<a rel="prev" href="{address_of(self.chapters[i - 1], "")}">'
                              f"{self.chapters[i - 1].title}</a>")
            if i + 1 < len(self.chapters):
                around.append(f'<a rel="next" href="{address_of(self.chapters[i + 1], "")}">'
                              f"{self.chapters[i + 1].title}</a>")
            chapters = "\n".join(
                self.contents(address_of, [other], 2 if other is chapter and i > 0 else 1)
                for other in self.chapters)
            (folder / f"{chapter.name}.html").write_text(page(
                plain(chapter.title) if i == 0 else f"{plain(chapter.title)} - Wavo",
                f'<nav aria-label="Chapters">\n{chapters}\n<p><a href="{PDF}">To print (PDF)</a></p></nav>\n'
                f"<main>\n{body}\n<p class=\"around\">{' '.join(around)}</p></main>"))
            self.write_leads(folder / "go", chapter)
        (folder / "images").mkdir()
        for name, source in sorted(self.pictures.items()):
            shutil.copyfile(source, folder / "images" / name)
        shutil.copyfile(STYLE, folder / "manual.css")

    @staticmethod
    def write_leads(folder, chapter):
        for anchor in ["", *sorted(chapter.anchors)]:
            place = f"../{chapter.name}.html" + (f"#{anchor}" if anchor else "")
            name = f"{chapter.name}.{anchor}.html" if anchor else f"{chapter.name}.html"
            (folder / name).write_text(
                f'<!DOCTYPE html>\n<html lang="en"><meta charset="utf-8"><title>{plain(chapter.title)}</title>\n'
                f'<meta http-equiv="refresh" content="0; url={html.escape(place)}">\n'
                f'<p><a href="{html.escape(place)}">{plain(chapter.title)}</a></p></html>\n')

    # One document to print.

    def write_pdf(self, folder):
        def address_of(chapter, anchor):
            return f"#{chapter.name}" + (f".{anchor}" if anchor else "")

        def picture_of(source):  # not by its path, of which names in the PDF would be made
            return "data:image/png;base64," + base64.b64encode(source.read_bytes()).decode()

        parts = [f'<section class="cover"><h1>Wavo</h1><p>Live signal scope for machine tools</p>'
                 f"<p>Manual of version {version()}</p></section>",
                 '<section class="contents"><h1 class="plain">Contents</h1>',
                 self.contents(address_of, self.chapters[1:], 2), "</section>"]
        for chapter in self.chapters[1:]:
            body = HEADING.sub(lambda match, name=chapter.name: (
                f'<h{match[1]} id="{name}.{match[2]}">{match[3]}</h{match[1]}>'),
                self.body(chapter, address_of, picture_of))
            parts.append(f'<section id="{chapter.name}">{body}</section>')
        whole = folder / "whole.html"
        whole.write_text(page("The manual of Wavo", "\n".join(parts), "print"))
        # Embedded fonts have names of hashes, and a date.
        always_the_same = {"PYTHONHASHSEED": "0", "SOURCE_DATE_EPOCH": "0"}
        said = subprocess.run(["weasyprint", "--quiet", str(whole), str(folder / PDF)], text=True,
                              stderr=subprocess.PIPE, env=os.environ | always_the_same, check=False)
        whole.unlink()
        if said.returncode != 0 or said.stderr:
            self.wrong.append(f"weasyprint: {said.stderr.strip()}")


def version():
    return re.search(r"project\(wavo VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text())[1]


def page(title, content, kind="screen"):
    return (f'<!DOCTYPE html>\n<html lang="en">\n<head>\n<meta charset="utf-8">\n'
            f'<meta name="viewport" content="width=device-width">\n<title>{title}</title>\n'
            f'<link rel="stylesheet" href="manual.css">\n</head>\n<body class="{kind}">\n{content}\n</body>\n</html>\n')


def main():
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        raise SystemExit(__doc__)
    folder = Path(sys.argv[1])
    if folder.exists():
        if any(folder.iterdir()) and not (folder / "go").is_dir():
            raise SystemExit(f"{folder} has something else in it")
        shutil.rmtree(folder)
    manual = Manual()
    manual.write_pages(folder)
    manual.write_pdf(folder)
    if manual.wrong:
        raise SystemExit("\n".join(dict.fromkeys(manual.wrong)))
    print(f"{folder}/index.html: {len(manual.chapters)} chapters, {len(manual.pictures)} pictures")


if __name__ == "__main__":
    main()
