#!/usr/bin/env python3
"""Looks for what is wrong with the manual as HTML and PDF (tools/manual.py):

    tools/check-manual.py FOLDER

Every link, anchor and picture of every page leads to something that is there, nothing is loaded from
elsewhere, no anchor is there twice, no picture and no page is left over, and every heading stands in the
contents and has a page in go/ that leads to it. Each finding is printed; the status is 1 then.
"""

import re
import subprocess
import sys
from html.parser import HTMLParser
from pathlib import Path


class Page(HTMLParser):
    def __init__(self, file):
        super().__init__()
        self.anchors, self.headings, self.links, self.loaded = [], [], [], []
        self.feed(file.read_text())

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        if "id" in values:
            self.anchors.append(values["id"])
            if re.fullmatch("h[1-3]", tag):
                self.headings.append((tag, values["id"]))
        if tag == "a" and "href" in values:
            self.links.append(values["href"])
        elif "href" in values:
            self.loaded.append(values["href"])
        if "src" in values:
            self.loaded.append(values["src"])
            if tag == "img" and not values.get("alt"):
                self.links.append(f"(no text instead of {values['src']})")
        if values.get("http-equiv") == "refresh":
            self.links.append(values["content"].partition("url=")[2])


def check(folder):
    files = {file for file in folder.rglob("*") if file.is_file()}
    pages = {file: Page(file) for file in files if file.suffix == ".html"}
    wrong, reached = [], {folder / "index.html"}
    for file, page in sorted(pages.items()):
        name = file.relative_to(folder)
        wrong += [f"{name}: {anchor} is there twice" for anchor in set(page.anchors)
                  if page.anchors.count(anchor) > 1]
        for target in page.links + page.loaded:
            if re.match("[a-z]+:|//", target):
                if target in page.loaded:
                    wrong.append(f"{name}: loads {target}")
                continue
            path, _, anchor = target.partition("#")
            place = (file.parent / path).resolve() if path else file
            if place not in files:
                wrong.append(f"{name}: no {target}")
            elif anchor and anchor not in pages[place].anchors:
                wrong.append(f"{name}: no heading for {target}")
            reached.add(place)
    leads = {file for file in pages if file.parent.name == "go"}
    wrong += [f"nothing leads to {file.relative_to(folder)}" for file in sorted(files - leads - reached)]

    contents = pages[folder / "index.html"].links
    text = subprocess.run(["pdftotext", folder / "wavo-manual.pdf", "-"], capture_output=True, text=True,
                          check=True).stdout
    printed = " ".join(text.split())
    for file, page in sorted(pages.items()):
        if file in leads:
            continue
        title = re.search("<h1[^>]*>(.*?)</h1>", file.read_text(), re.S)
        if file.name != "index.html" and re.sub("<[^>]*>", "", title[1]) not in printed:
            wrong.append(f"{file.name} is not in the PDF")
        for level, anchor in page.headings:
            target = file.name if level == "h1" else f"{file.name}#{anchor}"
            if file.name != "index.html" and target not in contents:
                wrong.append(f"{target} is not in the contents")
            if anchor != "contents" and folder / "go" / f"{file.stem}.{anchor}.html" not in leads:
                wrong.append(f"go/ has nothing that leads to {target}")
    return wrong, len(pages) - len(leads)


def main():
    if len(sys.argv) != 2:
        raise SystemExit(__doc__)
    wrong, pages = check(Path(sys.argv[1]).resolve())
    if pages < 10:
        wrong.append(f"only {pages} pages")
    if wrong:
        raise SystemExit("\n".join(f"check-manual: {finding}" for finding in wrong))
    print(f"check-manual: {pages} pages, nothing is wrong")


if __name__ == "__main__":
    main()
