#!/usr/bin/env python3
"""Makes of the Markdown pages what Doxygen understands, and looks for broken links in the site.

pages.py prepare FOLDER PAGE...    writes the pages into FOLDER, with a name for each page and each
                                   heading, and prints their paths
pages.py check FOLDER              checks every link of the HTML pages and of their tree; other sites are not asked
"""
import html.parser
import os
import re
import sys
import urllib.parse

pages = {}  # path of a Markdown page: {GitHub's name of a heading: the heading's name in the site}


def name_of(path):
    """`docs/limits.md` is limits.html in the site; a README is named after its folder."""
    folder, file = os.path.split(os.path.splitext(path)[0])
    return file.lower() if file != "README" else folder or "readme"


def blocks(text):
    """The text in pieces, each with True when it is code: fenced, or indented after an empty line."""
    code = r"^```.*?^```$|(?<=\n\n)(?: {4}[^\n]*\n|\n(?= {4}))+"
    last = 0
    for match in re.finditer(code, text, re.M | re.S):
        yield text[last : match.start()], False
        yield match.group(), True
        last = match.end()
    yield text[last:], False


def slug(heading):
    """The anchor that GitHub makes of a heading."""
    return re.sub(r"[^\w -]", "", heading.strip().lower()).replace(" ", "-")


def headings(path, text):
    first = [name_of(path)]
    return {slug(h): first.pop() if first else name_of(path) + "-" + slug(h)
            for prose, is_code in blocks(text) if not is_code
            for h in re.findall(r"^#+ (.*)", prose, re.M)}


def target(path, link):
    """What Doxygen needs for a link in the page `path`."""
    file, _, anchor = link.partition("#")
    if re.match(r"\w+:", link):
        return link
    file = os.path.normpath(os.path.join(os.path.dirname(path), file)) if file else path
    if file.endswith(".png"):
        return os.path.basename(file)
    if file not in pages:
        if anchor or not os.path.exists(file):
            sys.exit("%s: there is no %s" % (path, link))
        return "../" + file  # beside the pages
    if anchor and anchor not in pages[file]:
        sys.exit("%s: there is no heading for %s" % (path, link))
    return "@ref " + (pages[file][anchor] if anchor else name_of(file))


def convert(path, prose):
    prose = re.sub(r"^(#+) (.*)", lambda m: "%s %s {#%s}" % (*m.groups(), pages[path][slug(m[2])]), prose, flags=re.M)
    # Doxygen ends code in single quotation marks at an apostrophe.
    prose = re.sub(r"(?<!`)`([^`]+)`(?!`)", r"``\1``", prose)
    return re.sub(r"\]\(([^)\s]+)\)", lambda m: "](%s)" % target(path, m[1]), prose)


def prepare(folder, paths):
    texts = {path: open(path, encoding="utf-8").read() for path in paths}
    pages.update((path, headings(path, text)) for path, text in texts.items())
    for path, text in texts.items():
        file = os.path.join(folder, name_of(path) + ".md")
        print(file)
        with open(file, "w", encoding="utf-8") as page:
            page.writelines(piece if is_code else convert(path, piece) for piece, is_code in blocks(text))


class Links(html.parser.HTMLParser):
    def __init__(self, text):
        super().__init__()
        self.links, self.anchors = [], set()
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        for key, value in attributes:
            if key in ("href", "src"):
                self.links.append(value)
            elif key in ("id", "name"):
                self.anchors.add(value)


def check(folder):
    seen = {}
    for file in os.listdir(folder):
        if not file.endswith(".html") and not file.startswith("navtree"):
            continue
        with open(os.path.join(folder, file), encoding="utf-8") as page:
            text = page.read()
        seen[file] = Links(text)
        if not file.endswith(".html"):  # the tree on the left
            seen[file].links = re.findall(r'"([\w.-]+\.html[^"]*)"', text)
    broken = set()
    for file, page in seen.items():
        for link in page.links:
            path, _, anchor = urllib.parse.unquote(link).partition("#")
            if re.match(r"\w+:", path):
                continue
            path = path or file
            if not os.path.exists(os.path.join(folder, path)) or anchor and path in seen and anchor not in seen[path].anchors:
                broken.add("%s: the link to %s is broken" % (file, link))
    sys.exit("\n".join(sorted(broken)) or (0 if seen else "there are no pages in " + folder))


prepare(sys.argv[2], sys.argv[3:]) if sys.argv[1] == "prepare" else check(sys.argv[2])
